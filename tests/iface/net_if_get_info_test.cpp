// SPDX-License-Identifier: Apache-2.0
// The record of one interface, up or down.
#include <cstring>

#include <zarnnetsdk/iface.h>

#include "support/transcript.h"

using namespace test;

TEST(IfGetInfo, TellsOfAnInterfaceUpOrDown) {
  KOPANetIfInfo info;
  ZARNNETIFADDR config;
  const auto ask = [&](const char* name) {
    std::memset(&info, 'Z', sizeof info);
    std::memset(&config, 'Z', sizeof config);
    if (Tell(name, [&] { return ZARNNetIFGetInfoEx(name, &info, &config); }) == 0) {
      char text[256];
      std::snprintf(text, sizeof text, "%s %02x:%02x %s %s link %d %s; %d %s %s", info.name,
                    info.mac[0], info.mac[5], info.ip, info.mask, info.link,
                    (info.flags & 1) != 0 ? "up" : "down", config.bootProto, config.szIP,
                    config.szMask);
      Say(text);
    } else {
      EXPECT_EQ(std::string(sizeof info, 'Z'),
                std::string(reinterpret_cast<const char*>(&info), sizeof info));
    }
  };
  Shell(
      "ip link add exactly15chars0 type bridge; ip link set exactly15chars0 address "
      "02:00:00:00:00:77; ip address add 10.7.0.5/20 dev exactly15chars0");
  for (const char* name : {"none0", "exactly15chars0x", "exactly15chars0"})
    ask(name);
  WriteIfcfg("exactly15chars0", "BOOTPROTO=static\nIPADDR=10.7.0.6\nNETMASK=255.0.0.0\n");
  ask("exactly15chars0");
  Shell("ip link set exactly15chars0 up");
  ask("exactly15chars0");
  Shell("ip address flush dev exactly15chars0");
  TELL(ZARNNetIFGetInfo("exactly15chars0", &info));
}
