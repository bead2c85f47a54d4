// SPDX-License-Identifier: Apache-2.0
// The part in a bridge as it is written, and what is refused.
#include <zarnnetsdk/virtual.h>

#include "support/transcript.h"

using namespace test;

namespace {

const ZARNNETIFSETTINGS kStatic{1, 0, "eth0", "10.0.0.5", "255.0.0.0"};
const ZARNNETIFSETTINGS kDhcp{0, 1, "eth0", "ignored\nX=1", ""};
const char kOld[] =
    "DEVICE=eth0\nTYPE=bridge\nPRIMARY=eth9\nBRIDGE=br9\nLOCAL_LAN=yes\nMTU=9000\nIPADDR=1.1.1.1\n"
    "NETMASK=255.255.0.0\nBOOTPROTO=static\nONBOOT=maybe";

void Set(const ZARNNETIFSETTINGS* settings, const ZARNBRIDGEINFO& info) {
  Tell(std::string(info.szName) + " is " + std::to_string(info.type) + " of " + info.szRef,
       [&] { return ZARNNetSetBridgeConfig(settings, &info); });
}

TEST(BridgeWriter, WritesEachRoleAndKeepsTheOldFile) {
  const ZARNNETIFSETTINGS* const settings[] = {nullptr, &kStatic, &kDhcp, &kDhcp};
  for (uint32_t role = 1; role <= 4; ++role) {
    WriteIfcfg("eth0", kOld);
    Set(settings[role - 1], {role, "eth0", "ref0"});
  }
  TELL(ZARNNetDisableBridgeSlave(&kStatic));
  Set(nullptr, {4, "eth7", "br0"});
}

TEST(BridgeWriter, RefusesWhatIsNoRoleNameOrAddress) {
  WriteIfcfg("eth0", kOld);
  Set(nullptr, {1, "", ""});
  Set(nullptr, {4, "../eth0", "br0"});
  Set(nullptr, {4, "eth0", "br0\nX=1"});
  Set(nullptr, {5, "eth0", ""});
  TELL(ZARNNetSetBridgeConfig(&kStatic, nullptr));
  const ZARNNETIFSETTINGS evil{1, 1, "eth0", "1.1.1.1\nX=1", "255.0.0.0"};
  TELL(ZARNNetDisableBridgeSlave(&evil));
}

}  // namespace
