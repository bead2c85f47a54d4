// VLANs put over an interface and removed: whole files, commands, events, and what a failed step
// leaves. The driver's answers are those of the VLAN queries' tests.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kScript[] = "/etc/rc.network";
const char kFirewall[] = "/usr/zarn/bin/zarnfirewall";
const char kTraffic[] = "/usr/zarn/bin/tctool";
const char kFolder[] = "/etc/sysconfig/network-scripts";
const char kInfo[] = "/etc/zarninfo.conf";
const ZARNNETIFSETTINGS kStatic{1, 0, "", "10.0.0.5", "255.0.0.0"};
const ZARNNETIFSETTINGS kDhcp{0, 0, "", "not", "looked at"};
const char kParent[] =
    "DEVICE=eth1\nBOOTPROTO=static\nIPADDR=1.1.1.1\nNETMASK=255.255.0.0\nIPV6INIT=static\n"
    "IPV6ADDR=2001:db8::1\nIPV6PREFIXLENG=64\nIPV6_DEFAULTGW=2001:db8::fe\nIPV6DNS=\n#IPADDR=\nMTU="
    "9000";

Lines TellAll(const std::string& stop, const std::string& start, const std::string& names) {
  return {"/etc/rc.network stop " + stop,
          "/etc/rc.network start " + start,
          "/usr/zarn/bin/zarnfirewall --change-adapter " + names,
          "/usr/zarn/bin/zarnfirewall --change-security-adapter " + names,
          "/usr/zarn/bin/tctool -change_interface " + names,
          "/etc/rc.network nat-restart-dhcp"};
}

std::string Event(const char* stage, const char* oldName, const char* newName, int result) {
  return "net/ifname_change " + std::string(stage) + " IFNAME_1=" + newName +
         " IFNAME_COUNT=1 ORIGIN_IFNAME_1=" + oldName +
         " ORIGIN_IFNAME_COUNT=1 RESULT=" + std::to_string(result);
}

struct VlanChange : testing::Test {
  VlanChange() {
    for (const char* tool : {kScript, kFirewall, kTraffic})
      RecordTool(tool);
    WriteFile(kInfo, "eth1_mtu=\"9000\"\n");
    WriteIfcfg("eth1", kParent);
  }
  static Lines Temporary() {
    Lines found;
    for (const std::string& name : FolderEntries(kFolder)) {
      if (name.starts_with("VLAN_") || name.starts_with("DEV")) found.push_back(name);
    }
    return found;
  }
  static void Failed(int code, int result) {
    EXPECT_EQ(-1, result);
    EXPECT_EQ(code, KOPACErrGet());
    EXPECT_EQ(Lines{}, RecordedCalls());
    EXPECT_EQ(Lines{}, Temporary());
    KOPACErrSetEx(0, "", 0);
  }
};

TEST_F(VlanChange, MovesTheAddressesToTheVlanAndBack) {
  ASSERT_EQ(0, KOPANetVlanCreate("eth1", 20, &kStatic)) << LogText();
  const std::string kept =
      "DEVICE=eth1\nIPV6ADDR=2001:db8::1\nIPV6PREFIXLENG=64\n#IPADDR=\nMTU=9000\n";
  EXPECT_EQ(kept + "BOOTPROTO=none\nIPV6INIT=off\n", ReadIfcfg("eth1"));
  const std::string addresses =
      "BOOTPROTO=static\nIPADDR=10.0.0.5\nNETMASK=255.0.0.0\nIPV6INIT=static\n"
      "IPV6ADDR=2001:db8::1\nIPV6PREFIXLENG=64\nIPV6_DEFAULTGW=2001:db8::fe\n";
  EXPECT_EQ("DEVICE=eth1.20\nVLAN_ROW_DEVICE=eth1\nVLAN_ID=20\nONBOOT=yes\n" + addresses,
            ReadIfcfg("eth1.20"));
  EXPECT_EQ(0644, FileMode(IfcfgPath("eth1")));
  EXPECT_EQ(0644, FileMode(IfcfgPath("eth1.20")));
  EXPECT_EQ("eth1_mtu=\"9000\"\neth1.20_mtu=\"9000\"\n", ReadFile(kInfo));
  EXPECT_EQ(TellAll("eth1", "eth1 eth1.20", "eth1 eth1.20"), RecordedCalls());
  EXPECT_EQ((Lines{Event("pre", "eth1", "eth1.20", 0), Event("post", "eth1", "eth1.20", 0)}),
            Events());
  EXPECT_EQ(2000, SleptMilliseconds());

  ASSERT_EQ(0, KOPANetVlanRemove("eth1.20")) << LogText();
  EXPECT_EQ("DEVICE=eth1\n#IPADDR=\nMTU=9000\n" + addresses, ReadIfcfg("eth1"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth1.20")));
  EXPECT_EQ(0644, FileMode(IfcfgPath("eth1")));
  EXPECT_EQ("eth1_mtu=\"9000\"\n", ReadFile(kInfo));
  Lines calls = TellAll("eth1", "eth1 eth1.20", "eth1 eth1.20");
  for (const std::string& call : TellAll("eth1 eth1.20", "eth1", "eth1.20 eth1"))
    calls.push_back(call);
  EXPECT_EQ(calls, RecordedCalls());
  ASSERT_EQ(4U, Events().size());
  EXPECT_EQ(Event("pre", "eth1.20", "eth1", 0), Events()[2]);
  EXPECT_EQ(Event("post", "eth1.20", "eth1", 0), Events()[3]);
  EXPECT_EQ(Lines{}, Temporary());
}

// One record for all who are told, and what the start script finds when it runs.
TEST_F(VlanChange, TakesItsStepsInOneOrder) {
  WriteFile("/usr/zarn/plugins/net/ifname_change/10-order",
            "#!/bin/sh\necho event $1 >>/run/recorded-calls\n", 0755);
  WriteFile("/etc/rc.network",
            "#!/bin/sh\n[ -e " + IfcfgPath("eth1.20") +
                " ] && files=new || files=old\necho $* $files >>/run/recorded-calls\n",
            0755);
  WriteFile("/etc/dhcpd/dhcpd-eth1-subnet0.conf", "interface=eth1\n");
  RecordTool("/bin/sed");
  ASSERT_EQ(0, KOPANetVlanCreate("eth1", 20, &kStatic)) << LogText();
  const std::string names = " eth1 eth1.20";
  EXPECT_EQ((Lines{"event pre", "stop eth1 old", "start" + names + " new",
                   std::string(kFirewall) + " --change-adapter" + names,
                   std::string(kFirewall) + " --change-security-adapter" + names,
                   "/usr/zarn/bin/tctool -change_interface" + names,
                   "/bin/sed -i s/eth1/eth1.20/g /etc/dhcpd/dhcpd-eth1.20-subnet0.conf",
                   "nat-restart-dhcp new", "event post"}),
            RecordedCalls());
}

TEST_F(VlanChange, FollowersThatFailAreToldToAllAndEndIt) {
  WriteFile("/etc/rc.network", "#!/bin/sh\n[ $1 != nat-restart-dhcp ]\n", 0755);
  EXPECT_EQ(-1, KOPANetVlanCreate("eth1", 20, &kStatic));
  EXPECT_EQ(Event("post", "eth1", "eth1.20", -1), Events().back());
  RecordTool("/usr/zarn/bin/tctool", 1);
  WriteFile("/etc/dhcpd/dhcpd-eth1.20.info", "");
  EXPECT_EQ(-1, KOPANetVlanRemove("eth1.20"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_vlan_remove",
                        "Failed to /usr/zarn/bin/tctool -change_interface eth1.20 eth1"))
      << LogText();
  EXPECT_TRUE(FileExists("/etc/dhcpd/dhcpd-eth1.20.info")) << "not moved";
  EXPECT_EQ(Event("post", "eth1.20", "eth1", -1), Events().back());
}

TEST_F(VlanChange, LongAndEmptyFilesKeepEveryLine) {
  std::string lines;
  for (int i = 0; i < 40; ++i)
    lines += "KEY" + std::to_string(i) + "=" + std::string(300, 'x') + "\n";
  for (const std::string& text : {lines, std::string()}) {
    WriteIfcfg("eth1", text);
    ASSERT_EQ(0, KOPANetVlanCreate("eth1", 20, &kDhcp)) << LogText();
    EXPECT_EQ(text + "BOOTPROTO=none\nIPV6INIT=off\n", ReadIfcfg("eth1"));
    WriteIfcfg("eth1.20", ReadIfcfg("eth1.20") + "IPV6DNS2=::1");
    ASSERT_EQ(0, KOPANetVlanRemove("eth1.20"));
    EXPECT_EQ(text + "BOOTPROTO=dhcp\nIPV6DNS2=::1\n", ReadIfcfg("eth1"));
  }
}

TEST_F(VlanChange, IsRefusedBeforeAnythingIsTouched) {
  const ZARNNETIFSETTINGS badMask{1, 0, "", "10.0.0.5", "255.0.255.0"};
  const ZARNNETIFSETTINGS badIp{1, 0, "", "10.0.0.5\nX=1", "255.0.0.0"};
  for (const unsigned id : {0U, 4095U})
    Failed(0x0D00, KOPANetVlanCreate("eth1", id, &kDhcp));
  for (const char* parent : {"", "../eth1", "abcdefghijkl", static_cast<const char*>(nullptr)})
    Failed(0x0D00, KOPANetVlanCreate(parent, 4094, &kDhcp));
  for (const ZARNNETIFSETTINGS* settings :
       {&badMask, &badIp, static_cast<const ZARNNETIFSETTINGS*>(nullptr)})
    Failed(0x0D00, KOPANetVlanCreate("eth1", 20, settings));
  Failed(0xBC00, KOPANetVlanCreate("none0", 20, &kDhcp));
  Failed(0xBB00, KOPANetVlanCreate("eth0", 10, &kDhcp));
  Shell("ip link add eth0.10 type bridge");
  Failed(0x0D00, KOPANetVlanCreate("eth0.10", 5, &kDhcp));
  Failed(0x0D00, KOPANetVlanRemove(""));
  Failed(0x0D00, KOPANetVlanRemove(nullptr));
  EXPECT_EQ(-1, KOPANetVlanRemove("eth2.9"));
  EXPECT_EQ(Lines{}, Events());
  EXPECT_EQ(kParent, ReadIfcfg("eth1"));
}

TEST_F(VlanChange, OneVlanAParent) {
  WriteFile("/tmp/vlan-table", "head\nhead\neth1.7 | 7  | eth1\n");
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/vlan/config", ReadFile("/tmp/vlan-table"));
  Failed(0xBB00, KOPANetVlanCreate("eth1", 20, &kDhcp));
  WriteFile("/proc/net/vlan/config", "head\nhead\nbroken\n");
  Failed(0x4000, KOPANetVlanCreate("eth1", 20, &kDhcp));
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(VlanChange, FailedStepsEndItAndAreAnnounced) {
  RemoveFile(IfcfgPath("eth1"));
  Failed(0x0900, KOPANetVlanCreate("eth1", 20, &kStatic));
  Failed(0x0900, KOPANetVlanRemove("eth0.10"));
  EXPECT_EQ((Lines{Event("pre", "eth1", "eth1.20", 0), Event("post", "eth1", "eth1.20", -1),
                   Event("pre", "eth0.10", "eth0", 0), Event("post", "eth0.10", "eth0", -1)}),
            Events());
  WriteIfcfg("eth1", kParent);
  RecordTool(kFirewall, 1);
  EXPECT_EQ(-1, KOPANetVlanCreate("eth1", 20, &kStatic));
  EXPECT_EQ((Lines{"/etc/rc.network stop eth1", "/etc/rc.network start eth1 eth1.20",
                   "/usr/zarn/bin/zarnfirewall --change-adapter eth1 eth1.20"}),
            RecordedCalls());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_vlan_create",
                        "Failed to /usr/zarn/bin/zarnfirewall -change_interface eth1 eth1.20"))
      << LogText();
  EXPECT_TRUE(FileExists(IfcfgPath("eth1.20"))) << "what is in place stays";
}

TEST_F(VlanChange, AFullDiskLeavesTheFiles) {
  MountEmpty(kFolder, "16k");
  WriteIfcfg("eth1", kParent);
  WriteIfcfg("eth0", kParent);
  WriteIfcfg("eth0.10", "BOOTPROTO=dhcp\n");
  FillDisk(kFolder);
  Failed(0x0B00, KOPANetVlanCreate("eth1", 20, &kStatic));
  Failed(0x0B00, KOPANetVlanRemove("eth0.10"));
  EXPECT_EQ(kParent, ReadIfcfg("eth1"));
  EXPECT_EQ(kParent, ReadIfcfg("eth0"));
  EXPECT_TRUE(FileExists(IfcfgPath("eth0.10")));
}

}  // namespace
