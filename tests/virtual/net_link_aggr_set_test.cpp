// SPDX-License-Identifier: Apache-2.0
// Bonds as they are created, changed and deleted.
#include <cstring>
#include <sys/stat.h>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/virtual.h>

#include "support/transcript.h"

using namespace test;

namespace {

const char kFolder[] = "/etc/sysconfig/network-scripts";
const char kOptions[] = "BONDING_OPTS=\"mode=1 use_carrier=0 miimon=100 updelay=100\"\n";
const char kJoined[] = "\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes\n";

// Writes down how the file tools are called, and runs them.
void WatchFileTools() {
  Shell("cp /bin/cp /usr/real-cp && cp /bin/mv /usr/real-mv");
  for (const std::string tool : {"cp", "mv"}) {
    WriteFile(
        "/bin/" + tool,
        "#!/bin/sh\necho \"$0 $*\" >>/run/recorded-calls\nexec /usr/real-" + tool + " \"$@\"\n",
        0755);
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

void Set(const std::string& why, ZARNLINKAGGROPT record) {
  Tell(why, [&] { return ZARNNetLinkAggrSet(&record); });
}

struct LinkAggr : ::testing::Test {
  LinkAggr() {
    MountEmpty("/sys/class/net");
    MountEmpty(kFolder);
    WatchFileTools();
    RecordTool("/etc/rc.network", 1);  // its status does not matter
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
  Set("eth1 has no file, and so there is no backup to remove",
      Record("bond0", 4, {"eth0", "eth1"}));
}

TEST_F(LinkAggr, ASlaveThatCannotJoinUndoesTheWholeBond) {
  WriteIfcfg("eth0", "DEVICE=eth0\nBOOTPROTO=dhcp");
  WriteIfcfg("eth1", "BOOTPROTO=none\n");
  WriteIfcfg("eth2", "IPADDR=10.0.0.3");
  Shell("mount --bind " + IfcfgPath("eth2") + " " + IfcfgPath("eth2"));
  Set("the file of eth2 cannot be replaced", Record("bond0", 2, {"eth0", "eth1", "eth2"}));
}

TEST_F(LinkAggr, WhatIsNoBondChangesNoFile) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  Set("one slave", Record("bond0", 1, {"eth0"}));
  Set("no such mode", Record("bond0", 9, {"eth0", "eth1"}));
  Set("a bond's name that is a path", Record("../evil", 1, {"eth0", "eth1"}));
  Set("a slave's name that is a path", Record("bond0", 1, {"eth0", "../x"}));
  Set("a name without its end", Record("bond0", 1, {"eth0", "0123456789abcdef"}));
  auto many = Record("bond0", 1, {"eth0", "eth1"});
  many.cSlave = 33;
  Set("more slaves than there is room for", many);
  WriteFile("/sys/class/net/bond1/bonding/slaves", "eth0 eth1\n");
  Set("a bond whose mode cannot be read", Record("bond1", 0, {}));
}

TEST_F(LinkAggr, ADeletedBondLeavesItsSettingsToItsFirstSlaveAlone) {
  Present("bond0", "eth2 eth1 eth0", "active-backup 1");
  WriteIfcfg("bond0", std::string("DEVICE=bond0\nBOOTPROTO=static\nIPADDR=10.0.0.5\n") + kOptions);
  WriteIfcfg("eth0", std::string("DEVICE=eth0\nBOOTPROTO=dhcp") + kJoined);
  WriteIfcfg("eth1", std::string("DEVICE=eth1\nBOOTPROTO=static\nIPADDR=10.0.0.5\n") +
                         "NETMASK=255.0.0.0" + kJoined);
  WriteIfcfg("eth2", std::string("DEVICE=eth2\nBOOTPROTO=none\nIPADDR=10.0.0.7") + kJoined);
  WriteIfcfg("eth3", "DEVICE=eth3\nMASTER=bond00\n");
  WriteIfcfg("eth9.saved", "DEVICE=eth9\nMASTER=bond0\n");
  WriteIfcfg("bond0.mine", "DEVICE=bond0\n");
  auto record = Record("bond0", 0, {"eth7"});
  TELL(ZARNNetLinkAggrSet(&record));
  Say(std::to_string(record.cSlave) + " slaves, the first " + record.rgszSlave[0]);
}

TEST_F(LinkAggr, OnlyADifferenceIsAChangeAndNobodyIsToldOfIt) {
  Present("bond0", "eth0 eth1", "active-backup 1");
  Set("the bond as it is", Record("bond0", 4, {"eth0", "eth1"}));
  Set("an empty folder: nothing is created", Record("bond0", 5, {"eth1", "eth2"}));
  WriteIfcfg("bond0", "DEVICE=bond0\nBOOTPROTO=dhcp\n");
  for (const std::string slave : {"eth0", "eth1"})
    WriteIfcfg(slave, "DEVICE=" + slave + "\nMASTER=bond0\nSLAVE=yes\n");
  Set("another mode and another slave", Record("bond0", 5, {"eth1", "eth2"}));
}

TEST_F(LinkAggr, AsManySlavesAndAsLongNamesAsThereCanBe) {
  Lines slaves;
  for (int i = 10; i < 42; ++i)
    slaves.push_back("ethernet-port" + std::to_string(i));
  WriteIfcfg(slaves[0], "BOOTPROTO=none\nIPADDR=10.0.0.1\n");
  Set("32 slaves", Record("bond-of-the-lab", 4, slaves));
}

TEST_F(LinkAggr, ABondWithoutListedSlavesGoesToTheFirstFileThatNamesIt) {
  WriteIfcfg("bond0", "DEVICE=bond0\nBOOTPROTO=dhcp\nA=b");
  WriteIfcfg("eth4", "DEVICE=eth4\nMASTER=bond0\n");
  auto record = Record("bond0", 0, {});
  TELL(ZARNNetLinkAggrConfDel(&record));
  TELL(ZARNNetLinkAggrConfDel(&record));
  WriteIfcfg("eth4", "DEVICE=eth4\nMASTER=bond0\n");
  TELL(ZARNNetLinkAggrConfDel(&record));
  WriteIfcfg("eth5", "MASTER=bond0\n");
  TELL(ZARNNetLinkAggrConfDel(&record));
}

// A copy that an earlier call left is no way back; a file that cannot be replaced ends the change.
TEST_F(LinkAggr, AFailureGivesEveryFileItsOwnContent) {
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.9.9.9\n");
  for (const char* ifname : {"eth0.saved", "eth1.saved", "eth2.saved"})
    WriteIfcfg(ifname, "STALE=yes\n");
  WriteFile(IfcfgPath("bond0") + "/in/the/way", "");
  Set("the bond's file cannot be written", Record("bond0", 4, {"eth0", "eth1"}));
  RemoveFile(IfcfgPath("bond0"));
  WriteIfcfg("bond0", "DEVICE=bond0\nBOOTPROTO=static\nIPADDR=10.0.0.5\n");
  WriteIfcfg("eth0", std::string("DEVICE=eth0\nBOOTPROTO=dhcp") + kJoined);
  WriteIfcfg("eth1", std::string("DEVICE=eth1\nBOOTPROTO=static\nIPADDR=10.0.0.5") + kJoined);
  WriteIfcfg("eth2", std::string("DEVICE=eth2\nBOOTPROTO=none") + kJoined);
  Shell("chown 12:34 " + IfcfgPath("eth0") + "; chmod 640 " + IfcfgPath("eth0"));
  Shell("mount --bind " + IfcfgPath("eth2") + " " + IfcfgPath("eth2"));
  auto record = Record("bond0", 0, {"eth0", "eth1", "eth2"});
  TELL(ZARNNetLinkAggrConfDel(&record));
  Say(Shell("stat -c '%a %u %g' " + IfcfgPath("eth0")));
  WriteFile(IfcfgPath("eth3") + "/in/the/way", "");
  TELL(ZARNNetLinkAggrConfSetSlave("eth3", 0, nullptr));
  TELL(ZARNNetLinkAggrConfSetSlave("-i", 0, nullptr));
  TELL(ZARNNetLinkAggrConfSetSlave("eth0", 1, "--help"));
  EXPECT_EQ(0U, ZARNNetLinkAggrStringToMode(nullptr));
  EXPECT_EQ(ZARNNETERR_BAD_PARAMETER, KOPACErrGet());
}

TEST_F(LinkAggr, ASlaveWithTheBondsAddressThatCannotBeWrittenIsTold) {
  WriteIfcfg("bond0", "BOOTPROTO=static\nIPADDR=10.0.0.5\n");
  WriteIfcfg("eth0", std::string("DEVICE=eth0") + kJoined);
  WriteIfcfg("eth1", std::string("DEVICE=eth1\nBOOTPROTO=static\nIPADDR=10.0.0.5") + kJoined);
  Shell("mount --bind " + IfcfgPath("eth1") + " " + IfcfgPath("eth1"));
  auto record = Record("bond0", 0, {"eth0", "eth1"});
  REFUSED(ZARNNETERR_NO_MEMORY, ZARNNetLinkAggrConfDel(&record));
}

TEST_F(LinkAggr, FilesKeepTheirModeUnderAStrictUmaskAndLeasesAreRootsOwnFilesOnly) {
  const std::string lease = "/tmp/dhcpv4.leases.";
  umask(077);
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  WriteIfcfg("eth1", "BOOTPROTO=dhcp\n");
  WriteFile(lease + "eth0", "interface eth0\n", 0600);
  WriteFile("/etc/precious", "eth0\n");
  Shell("ln -s /etc/precious " + lease + "bond0");
  Set("a link in the lease's place", Record("bond0", 4, {"eth0", "eth1"}));
  Shell("chown 12:34 " + lease + "eth0");
  WriteFile(lease + "bond0", "kept\n");
  Set("another user's lease is none", Record("bond0", 4, {"eth0", "eth1"}));
  TELL(ZARNNetLinkAggrConfSetSlave("eth1", 0, nullptr));
}
