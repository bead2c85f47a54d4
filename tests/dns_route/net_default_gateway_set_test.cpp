// SPDX-License-Identifier: Apache-2.0
// The default gateway: stored, in the kernel, and read back from both.
#include <zarnnetsdk/dns_route.h>

#include "support/transcript.h"

using namespace test;

namespace {

const char kNetwork[] = "/etc/sysconfig/network";
const char kRoutes[] = "/proc/net/route";

// What is stored and what is in the kernel.
void Get() {
  char stored[16] = "";
  char active[16] = "";
  char ifname[16] = "";
  TELL(ZARNNetDefaultGatewayGetConf(stored, sizeof stored));
  TELL(ZARNNetDefaultGatewayGet(active, sizeof active));
  TELL(ZARNNetDefaultGatewayInterfaceGet(ifname, sizeof ifname));
  Say(std::string(stored) + ", " + active + ", " + ifname);
}

}  // namespace

TEST(DefaultGateway, IsTheOneTheKernelShowsAndReadsBackFromBothPlaces) {
  WriteFile(kNetwork, "NETWORKING=yes\nGATEWAY=10.0.0.1\nHOSTNAME=nas");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  BringUp("eth0");
  TELL(ZARNNetDefaultGatewaySetConf("192.168.50.1"));
  TELL(ZARNNetDefaultGatewaySet("192.168.50.1"));
  Get();
  TELL(ZARNNetDefaultGatewaySet("192.168.50.254"));
  Get();
  Say("the former one is not put back");
  TELL(ZARNNetDefaultGatewaySet("10.9.9.9"));
  ASSERT_EQ(0, ZARNNetDefaultGatewaySet("192.168.50.1"));
  TELL(ZARNNetDefaultGatewaySet(nullptr));
  TELL(ZARNNetDefaultGatewaySet(""));
  TELL(ZARNNetDefaultGatewaySetConf(""));
}

TEST(DefaultGateway, OfTheFilesThatCannotBeReadOrChanged) {
  WriteFile(kNetwork, "NETWORKING=yes\n");
  TELL(ZARNNetDefaultGatewaySetConf("10.0.0.1\nHOSTNAME=evil"));
  TELL(ZARNNetDefaultGatewaySetConf("$(reboot)"));
  TELL(ZARNNetDefaultGatewaySet("-host"));
  Get();
  RemoveFile(kNetwork);
  Get();
}

TEST(DefaultGateway, IsTheFirstUsableLineOfTheKernelsTable) {
  const std::string heading = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\n";
  const std::pair<const char*, const char*> tables[] = {
      {"the way out has no gateway",
       "eth0\t00000000\t00000000\t0001\t0\t0\t0\t00000000\t0\t0\t0\n"},
      {"the interface is cut to its room",
       "eth0\t00000000\t010AA8C0\t0003\t0\t0\t0\t000000FF\t0\t0\t0\n"
       "eth12\t00000000\t02A8A8C0\t0003\t0\t0\t9\t00000000\t0\t0\t0\n"},
      {"a broken line", "eth0\t00000000\tgateway\n"},
      {"no table", nullptr}};
  MountEmpty("/proc/self/net");
  for (const auto& [why, table] : tables) {
    char gateway[16] = "kept";
    char ifname[3] = "-";
    RemoveFile(kRoutes);
    if (table != nullptr) WriteFile(kRoutes, heading + table);
    Tell(why, [&] { return DefaultGatewayGet(gateway, sizeof gateway, ifname, sizeof ifname); });
    Say(std::string(gateway) + " " + ifname);
  }
}
