// Bonds as they are created, changed and deleted: files, commands and events, whole and in order.
#include <cstring>
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/virtual.h>

#include "frame/os/containers.h"
#include "support/appliance.h"

using namespace test;

namespace {

const char kFolder[] = "/etc/sysconfig/network-scripts";
const char kStopped[] = "/etc/rc.network stop ";
const char kOptions[] = "BONDING_OPTS=\"mode=1 use_carrier=0 miimon=100 updelay=100\"\n";

std::string Cp(const std::string& from, const std::string& to) {
  return "/bin/cp -f " + IfcfgPath(from) + " " + IfcfgPath(to);
}
std::string Back(const std::string& slave) {
  return "/bin/mv -f " + IfcfgPath(slave + ".saved") + " " + IfcfgPath(slave);
}
std::string CpLease(const std::string& from, const std::string& to) {
  return "/bin/cp -f /tmp/dhcpv4.leases." + from + " /tmp/dhcpv4.leases." + to;
}

// Writes down how the file tools are called, and runs them.
void WatchFileTools() {
  Shell("cp /bin/cp /tmp/real-cp && cp /bin/mv /tmp/real-mv");
  for (const std::string tool : {"cp", "mv"}) {
    RemoveFile("/bin/" + tool);
    RecordTool("/bin/" + tool);
    std::string script = ReadFile("/bin/" + tool);
    script.resize(script.find("\ncat ") + 1);
    WriteFile("/bin/" + tool, script + "exec /tmp/real-" + tool + " \"$@\"\n", 0755);
  }
}

ZARNLINKAGGROPT Record(const std::string& bond, uint32_t mode, const Lines& slaves) {
  ZARNLINKAGGROPT record{};
  std::memcpy(record.szName, bond.data(), bond.size());
  record.mode = mode;
  for (const std::string& slave : slaves)
    std::memcpy(record.rgszSlave[record.cSlave++], slave.data(), slave.size());
  return record;
}

class LinkAggr : public ::testing::Test {
 protected:
  void SetUp() override {
    MountEmpty("/sys/class/net");
    MountEmpty(kFolder);
    WatchFileTools();
    RecordTool("/etc/rc.network", 1);  // its status does not matter
    KOPACErrSetEx(0, "", 0);
  }

  static void Present(const std::string& bond, const std::string& slaves, const std::string& mode) {
    WriteFile("/sys/class/net/" + bond + "/bonding/slaves", slaves + "\n");
    WriteFile("/sys/class/net/" + bond + "/bonding/mode", mode + "\n");
  }
};

}  // namespace

TEST_F(LinkAggr, ANewBondTakesTheFirstSlavesSettingsAndLease) {
  WriteIfcfg("eth0", "DEVICE=eth0\nBOOTPROTO=Static\nIPADDR=10.0.0.5\nMASTER=bond7\nSLAVE=no");
  WriteFile("/tmp/dhcpv4.leases.eth0", "lease {\n  interface \"eth0\";\n} eth0");
  auto record = Record("bond0", 4, {"eth0", "eth1"});
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&record)) << LogText();
  EXPECT_EQ(std::string("DEVICE=bond0\nBOOTPROTO=Static\nIPADDR=10.0.0.5\n"
                        "ONBOOT=yes\nUSERCTL=no\n") +
                kOptions,
            ReadIfcfg("bond0"));
  EXPECT_EQ("DEVICE=eth0\nBOOTPROTO=Static\nIPADDR=10.0.0.5\nMASTER=bond0\nSLAVE=yes\nUSERCTL=no\n",
            ReadIfcfg("eth0"));
  EXPECT_EQ("DEVICE=eth1\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes\n", ReadIfcfg("eth1"));
  EXPECT_EQ("lease {\n  interface \"bond0\";\n} bond0", ReadFile("/tmp/dhcpv4.leases.bond0"));
  EXPECT_EQ((Lines{"ifcfg-bond0", "ifcfg-eth0", "ifcfg-eth1"}), FolderEntries(kFolder));
  EXPECT_EQ((Lines{"/etc/rc.network stop bond0 eth0 eth1", Cp("eth0", "bond0"),
                   CpLease("eth0", "bond0"), Cp("eth0", "eth0.saved"), Cp("eth1", "eth1.saved"),
                   "/etc/rc.network start bond0 eth0 eth1"}),
            RecordedCalls());
  const std::string names =
      "IFNAME_1=bond0 IFNAME_COUNT=1 ORIGIN_IFNAME_1=eth0 ORIGIN_IFNAME_2=eth1 "
      "ORIGIN_IFNAME_COUNT=2 RESULT=0";
  EXPECT_EQ((Lines{"net/ifname_change pre " + names, "net/ifname_change post " + names}), Events());
  // eth1 never had a file, so that there was no backup to remove.
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_link_aggr_set",
                        "remove file " + IfcfgPath("eth1.saved") + " failed"))
      << LogText();
}

TEST_F(LinkAggr, ASlaveThatCannotJoinUndoesTheWholeBond) {
  const std::string files[] = {"DEVICE=eth0\nBOOTPROTO=dhcp", "BOOTPROTO=none\n",
                               "IPADDR=10.0.0.3"};
  for (int i = 0; i < 3; ++i)
    WriteIfcfg("eth" + std::to_string(i), files[i]);
  Shell("mount --bind " + IfcfgPath("eth2") + " " + IfcfgPath("eth2"));  // cannot be replaced
  auto record = Record("bond0", 2, {"eth0", "eth1", "eth2"});
  EXPECT_EQ(-1, ZARNNetLinkAggrSet(&record));
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(files[i], ReadIfcfg("eth" + std::to_string(i)));
  EXPECT_FALSE(FileExists(IfcfgPath("bond0")));
  EXPECT_FALSE(FileExists(IfcfgPath("eth0.saved")));
  EXPECT_EQ((Lines{"/etc/rc.network stop bond0 eth0 eth1 eth2", Cp("eth0", "bond0"),
                   CpLease("eth0", "bond0"), Cp("eth0", "eth0.saved"), Cp("eth1", "eth1.saved"),
                   Cp("eth2", "eth2.saved"), Back("eth0"), Back("eth1"), Back("eth2"),
                   "/etc/rc.network start bond0 eth0 eth1 eth2"}),
            RecordedCalls());
  ASSERT_EQ(2U, Events().size());
  EXPECT_TRUE(Events()[1].ends_with("ORIGIN_IFNAME_COUNT=3 RESULT=-1")) << Events()[1];
}

TEST_F(LinkAggr, WhatIsNoBondChangesNoFile) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  auto one = Record("bond0", 1, {"eth0"});
  EXPECT_EQ(-1, ZARNNetLinkAggrSet(&one));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  EXPECT_EQ((Lines{"/etc/rc.network stop bond0 eth0", "/etc/rc.network start bond0 eth0"}),
            RecordedCalls());
  EXPECT_EQ(2U, Events().size());
  auto range = Record("bond0", 9, {"eth0", "eth1"});
  auto path = Record("../evil", 1, {"eth0", "eth1"});
  auto slave = Record("bond0", 1, {"eth0", "../x"});
  auto unended = Record("bond0", 1, {"eth0", "0123456789abcdef"});
  auto count = Record("bond0", 1, {"eth0", "eth1"});
  count.cSlave = 33;
  for (auto* record :
       {&range, &path, &slave, &unended, &count, static_cast<ZARNLINKAGGROPT*>(nullptr)}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNNetLinkAggrSet(record));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  WriteFile("/sys/class/net/bond1/bonding/slaves", "eth0 eth1\n");  // its mode cannot be read
  auto unreadable = Record("bond1", 0, {});
  EXPECT_EQ(-1, ZARNNetLinkAggrSet(&unreadable));
  EXPECT_EQ(0x0900, KOPACErrGet());
  EXPECT_EQ(2U, RecordedCalls().size());
  EXPECT_EQ(2U, Events().size());
  EXPECT_EQ(Lines{"ifcfg-eth0"}, FolderEntries(kFolder));
  EXPECT_EQ("DEVICE=eth0\n", ReadIfcfg("eth0"));
}

TEST_F(LinkAggr, ADeletedBondLeavesItsSettingsToItsFirstSlaveAlone) {
  Present("bond0", "eth2 eth1 eth0", "active-backup 1");
  WriteIfcfg("bond0", std::string("DEVICE=bond0\nBOOTPROTO=static\nIPADDR=10.0.0.5\n") + kOptions);
  const std::string joined = "\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes\n";
  WriteIfcfg("eth0", "DEVICE=eth0\nBOOTPROTO=dhcp" + joined);
  WriteIfcfg("eth1", "DEVICE=eth1\nBOOTPROTO=static\nIPADDR=10.0.0.5\nNETMASK=255.0.0.0" + joined);
  WriteIfcfg("eth2", "DEVICE=eth2\nBOOTPROTO=none\nIPADDR=10.0.0.7" + joined);
  WriteIfcfg("eth3", "DEVICE=eth3\nMASTER=bond00\n");
  WriteIfcfg("eth9.saved", "DEVICE=eth9\nMASTER=bond0\n");
  auto record = Record("bond0", 0, {"eth7"});
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&record)) << LogText();
  EXPECT_EQ("DEVICE=eth0\nBOOTPROTO=static\nIPADDR=10.0.0.5\n", ReadIfcfg("eth0"));
  EXPECT_EQ("DEVICE=eth1\nBOOTPROTO=none\nIPADDR=\nNETMASK=\n", ReadIfcfg("eth1"));
  EXPECT_EQ("DEVICE=eth2\nBOOTPROTO=dhcp\nIPADDR=\nNETMASK=\n", ReadIfcfg("eth2"));
  EXPECT_EQ("DEVICE=eth3\nMASTER=bond00\n", ReadIfcfg("eth3"));
  EXPECT_EQ((Lines{"ifcfg-eth0", "ifcfg-eth0.saved", "ifcfg-eth1", "ifcfg-eth1.saved", "ifcfg-eth2",
                   "ifcfg-eth2.saved", "ifcfg-eth3", "ifcfg-eth9.saved"}),
            FolderEntries(kFolder));
  EXPECT_EQ(3, record.cSlave);
  EXPECT_STREQ("eth0", record.rgszSlave[0]);
  EXPECT_EQ((Lines{"/etc/rc.network stop bond0 eth0 eth1 eth2", Cp("bond0", "eth0"),
                   Cp("eth0", "eth0.saved"), Cp("eth1", "eth1.saved"), Cp("eth2", "eth2.saved"),
                   "/etc/rc.network start bond0 eth0 eth1 eth2"}),
            RecordedCalls());
  ASSERT_EQ(2U, Events().size());
  EXPECT_EQ(
      "net/ifname_change pre IFNAME_1=eth0 IFNAME_2=eth1 IFNAME_3=eth2 IFNAME_COUNT=3 "
      "ORIGIN_IFNAME_1=bond0 ORIGIN_IFNAME_COUNT=1 RESULT=0",
      Events()[0]);
}

TEST_F(LinkAggr, OnlyADifferenceIsAChangeAndNobodyIsToldOfIt) {
  Present("bond0", "eth0 eth1", "active-backup 1");
  auto same = Record("bond0", 4, {"eth0", "eth1"});
  EXPECT_EQ(0, ZARNNetLinkAggrSet(&same));
  EXPECT_EQ(Lines{}, RecordedCalls());
  auto wanted = Record("bond0", 5, {"eth1", "eth2"});
  EXPECT_EQ(-1, ZARNNetLinkAggrSet(&wanted)) << "no file of the bond: nothing is created either";
  EXPECT_EQ(0x0900, KOPACErrGet()) << "an empty folder";
  WriteIfcfg("bond0", "DEVICE=bond0\nBOOTPROTO=dhcp\n");
  for (const std::string slave : {"eth0", "eth1"})
    WriteIfcfg(slave, "DEVICE=" + slave + "\nMASTER=bond0\nSLAVE=yes\n");
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&wanted)) << LogText();
  EXPECT_EQ("DEVICE=eth0\nBOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  EXPECT_EQ("DEVICE=eth1\nBOOTPROTO=dhcp\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes\n",
            ReadIfcfg("eth1"));
  EXPECT_EQ(
      "DEVICE=bond0\nBOOTPROTO=dhcp\nONBOOT=yes\nUSERCTL=no\nBONDING_OPTS=\"mode=0 "
      "use_carrier=0 miimon=100 updelay=100\"\n",
      ReadIfcfg("bond0"));
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(LinkAggr, AsManySlavesAndAsLongNamesAsThereCanBe) {
  Lines slaves;
  for (int i = 10; i < 42; ++i)
    slaves.push_back("ethernet-port" + std::to_string(i));
  WriteIfcfg(slaves[0], "BOOTPROTO=none\nIPADDR=10.0.0.1\n");
  auto record = Record("bond-of-the-lab", 4, slaves);
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&record)) << LogText();
  for (const std::string& slave : slaves)
    EXPECT_NE(std::string::npos, ReadIfcfg(slave).find("MASTER=bond-of-the-lab\n"));
  EXPECT_EQ(std::string("BOOTPROTO=dhcp\nIPADDR=\nNETMASK=\nDEVICE=bond-of-the-lab\nONBOOT=yes\n"
                        "USERCTL=no\n") +
                kOptions,
            ReadIfcfg("bond-of-the-lab"));
  auto calls = RecordedCalls();
  ASSERT_FALSE(calls.empty());
  EXPECT_TRUE(calls[0].starts_with(kStopped) && calls[0].ends_with(" ethernet-port41")) << calls[0];
}

TEST_F(LinkAggr, ABondWithoutListedSlavesGoesToTheFirstFileThatNamesIt) {
  WriteIfcfg("bond0", "DEVICE=bond0\nBOOTPROTO=dhcp\nA=b");
  WriteIfcfg("eth4", "DEVICE=eth4\nMASTER=bond0\n");
  auto record = Record("bond0", 0, {});
  EXPECT_EQ(0, ZARNNetLinkAggrConfDel(&record));
  EXPECT_EQ("DEVICE=eth4\nBOOTPROTO=dhcp\nA=b", ReadIfcfg("eth4"));
  EXPECT_EQ(-1, ZARNNetLinkAggrConfDel(&record)) << "it is gone";
  WriteIfcfg("eth4", "DEVICE=eth4\nMASTER=bond0\n");
  EXPECT_EQ(-1, ZARNNetLinkAggrConfDel(&record));
  EXPECT_EQ(0x2A00, KOPACErrGet());
  WriteIfcfg("eth5", "MASTER=bond0\n");
  EXPECT_EQ(-1, ZARNNetLinkAggrConfDel(&record));
  EXPECT_NE(std::string::npos, LogText().find(IfcfgPath("eth5") + " don't have key \"DEVICE\""))
      << LogText();
}
