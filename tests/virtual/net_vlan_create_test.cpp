// SPDX-License-Identifier: Apache-2.0
// VLANs put over an interface and removed. The driver is the one of the VLAN queries' tests.
#include <zarnnetsdk/virtual.h>

#include "support/kernel_answers.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kScript[] = "/etc/rc.network";
const char kFirewall[] = "/usr/zarn/bin/zarnfirewall";
const char kTraffic[] = "/usr/zarn/bin/tctool";
const char kFolder[] = "/etc/sysconfig/network-scripts";
const ZARNNETIFSETTINGS kStatic{1, 0, "", "10.0.0.5", "255.0.0.0"};
const ZARNNETIFSETTINGS kDhcp{0, 0, "", "not", "looked at"};
const char kParent[] =
    "DEVICE=eth1\nBOOTPROTO=static\nIPADDR=1.1.1.1\nNETMASK=255.255.0.0\nIPV6INIT=static\n"
    "IPV6ADDR=2001:db8::1\nIPV6PREFIXLENG=64\nIPV6_DEFAULTGW=2001:db8::fe\nIPV6DNS=\n#IPADDR=\nMTU="
    "9000";

struct VlanChange : testing::Test {
  VlanChange() {
    for (const char* tool : {kScript, kFirewall, kTraffic})
      RecordTool(tool);
    Kernel().vlanParents = {{"eth0.10", "eth0"}, {"eth1.20", "eth1"}};
    Kernel().vlanNeedsFile = "eth1.20";
    WriteFile("/etc/zarninfo.conf", "eth1_mtu=\"9000\"\n");
    WriteIfcfg("eth1", kParent);
  }
};

TEST_F(VlanChange, MovesTheAddressesToTheVlanAndBack) {
  TELL(KOPANetVlanCreate("eth1", 20, &kStatic));
  TELL(KOPANetVlanRemove("eth1.20"));
}

// What the start script finds when it runs, and the DHCP server's files.
TEST_F(VlanChange, TakesItsStepsInOneOrder) {
  WriteFile(kScript,
            "#!/bin/sh\n[ -e " + IfcfgPath("eth1.20") +
                " ] && files=new || files=old\necho $* $files >>/run/recorded-calls\n",
            0755);
  WriteFile("/etc/dhcpd/dhcpd-eth1-subnet0.conf", "interface=eth1\n");
  RecordTool("/bin/sed");
  TELL(KOPANetVlanCreate("eth1", 20, &kStatic));
}

TEST_F(VlanChange, FollowersThatFailAreToldToAllAndEndIt) {
  WriteFile(kScript, "#!/bin/sh\n[ $1 != nat-restart-dhcp ]\n", 0755);
  TELL(KOPANetVlanCreate("eth1", 20, &kStatic));
  RecordTool(kTraffic, 1);
  WriteFile("/etc/dhcpd/dhcpd-eth1.20.info", "");
  TELL(KOPANetVlanRemove("eth1.20"));
}

TEST_F(VlanChange, LongAndEmptyFilesKeepEveryLine) {
  std::string lines;
  for (int i = 0; i < 40; ++i)
    lines += "KEY" + std::to_string(i) + "=" + std::string(300, 'x') + "\n";
  for (const std::string& text : {lines, std::string()}) {
    WriteIfcfg("eth1", text);
    TELL(KOPANetVlanCreate("eth1", 20, &kDhcp));
    WriteIfcfg("eth1.20", ReadIfcfg("eth1.20") + "IPV6DNS2=::1");
    TELL(KOPANetVlanRemove("eth1.20"));
  }
}

TEST_F(VlanChange, IsRefusedBeforeAnythingIsTouched) {
  const ZARNNETIFSETTINGS badMask{1, 0, "", "10.0.0.5", "255.0.255.0"};
  const ZARNNETIFSETTINGS badIp{1, 0, "", "10.0.0.5\nX=1", "255.0.0.0"};
  TELL(KOPANetVlanCreate("eth1", 0, &kDhcp));
  TELL(KOPANetVlanCreate("eth1", 4095, &kDhcp));
  TELL(KOPANetVlanCreate("abcdefghijkl", 4094, &kDhcp));
  TELL(KOPANetVlanCreate("eth1", 20, &badMask));
  TELL(KOPANetVlanCreate("eth1", 20, &badIp));
  TELL(KOPANetVlanCreate("none0", 20, &kDhcp));
  TELL(KOPANetVlanCreate("eth0", 10, &kDhcp));
  Shell("ip link add eth0.10 type bridge");
  TELL(KOPANetVlanCreate("eth0.10", 5, &kDhcp));
  TELL(KOPANetVlanRemove("eth2.9"));
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/vlan/config", "head\nhead\neth1.7 | 7  | eth1\n");
  Say("one VLAN a parent");
  TELL(KOPANetVlanCreate("eth1", 20, &kDhcp));
  WriteFile("/proc/net/vlan/config", "head\nhead\nbroken\n");
  TELL(KOPANetVlanCreate("eth1", 20, &kDhcp));
}

// Where telling of it fails as well, the code is the step's.
TEST_F(VlanChange, FailedStepsEndItAndAreAnnounced) {
  const std::string broken = "/usr/zarn/plugins/net/ifname_change/99-broken";
  WriteFile(broken, "#!/bin/sh\nexit 1\n", 0755);
  RemoveFile(IfcfgPath("eth1"));
  TELL(KOPANetVlanCreate("eth1", 20, &kStatic));
  RemoveFile(broken);
  TELL(KOPANetVlanRemove("eth0.10"));
  WriteIfcfg("eth1", kParent);
  RecordTool(kFirewall, 1);
  TELL(KOPANetVlanCreate("eth1", 20, &kStatic));
}

// Killed between the two files; what another parent's create has left so is kept for its repeat.
TEST_F(VlanChange, ARepeatSetsRightWhatAKilledCreateHasLeft) {
  const std::string folder = std::string(kFolder) + "/";
  const std::string under = "BOOTPROTO=none\nIPV6INIT=off\n";
  WriteIfcfg("eth1", "DEVICE=eth1\nIPV6ADDR=2001:db8::1\n" + under);
  WriteIfcfg("eth7", under);
  WriteFile(folder + "VLAN_a1B2c3", "VLAN_ROW_DEVICE=eth1\nIPV6INIT=static\nIPV6DNS=::53\n");
  WriteFile(folder + "VLAN_zzzzzz", "VLAN_ROW_DEVICE=eth7\nIPV6INIT=auto\n");
  for (const char* left : {"VLAN_000000", "DEVICE_a1B2c3", "DEV_a1B2c3"})
    WriteFile(folder + left, "DEVI");
  TELL(KOPANetVlanCreate("eth1", 20, &kDhcp));
}

}  // namespace
