// Bonds: what failed changes, left-over copies, a strict umask and other users' files must not
// lose.
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

using namespace test;

namespace {

ZARNLINKAGGROPT Record(uint32_t mode, const Lines& slaves) {
  ZARNLINKAGGROPT record{};
  std::strcpy(record.szName, "bond0");
  record.mode = mode;
  for (const std::string& slave : slaves)
    std::strcpy(record.rgszSlave[record.cSlave++], slave.c_str());
  return record;
}

std::string Joined(const std::string& ifname, const std::string& rest) {
  return "DEVICE=" + ifname + "\n" + rest + "USERCTL=no\nMASTER=bond0\nSLAVE=yes\n";
}

void ExpectFiles(const std::vector<std::pair<std::string, std::string>>& files) {
  for (const auto& [ifname, text] : files)
    EXPECT_EQ(text, ReadIfcfg(ifname)) << ifname;
}

struct BondRollback : testing::Test {
  BondRollback() {
    MountEmpty("/sys/class/net");
    MountEmpty("/etc/sysconfig/network-scripts");
    RecordTool("/etc/rc.network", 1);  // its status does not matter
  }
};

TEST_F(BondRollback, LeftOverCopiesAreNotBroughtBack) {
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.9.9.9\n");
  for (const char* ifname : {"eth0.saved", "eth1.saved", "eth2.saved"})
    WriteIfcfg(ifname, "STALE=yes\n");
  WriteFile(IfcfgPath("bond0") + "/in/the/way", "");
  auto record = Record(ZARNBOND_ACTIVE_BACKUP, {"eth0", "eth1"});
  EXPECT_EQ(-1, ZARNNetLinkAggrSet(&record));
  ExpectFiles({{"eth0", "BOOTPROTO=static\nIPADDR=10.9.9.9\n"}, {"eth2.saved", "STALE=yes\n"}});
  EXPECT_FALSE(FileExists(IfcfgPath("eth0.saved")) || FileExists(IfcfgPath("eth1")));
}

TEST_F(BondRollback, AFailedDeleteGivesEveryFileItsOwnContent) {
  const std::string fixed = "BOOTPROTO=static\nIPADDR=10.0.0.5\n";
  const std::vector<std::pair<std::string, std::string>> files = {
      {"bond0", "DEVICE=bond0\n" + fixed},
      {"eth0", Joined("eth0", "BOOTPROTO=dhcp\n")},
      {"eth1", Joined("eth1", fixed)},
      {"eth2", Joined("eth2", "BOOTPROTO=none\n")}};
  for (const auto& [ifname, text] : files)
    WriteIfcfg(ifname, text);
  ASSERT_EQ(0, chown(IfcfgPath("eth0").c_str(), 12, 34));
  ASSERT_EQ(0, chmod(IfcfgPath("eth0").c_str(), 0640));
  Shell("mount --bind " + IfcfgPath("eth2") + " " + IfcfgPath("eth2"));  // cannot be replaced
  auto record = Record(ZARNBOND_NONE, {"eth0", "eth1", "eth2"});
  EXPECT_EQ(-1, ZARNNetLinkAggrConfDel(&record));
  ExpectFiles(files);
  struct stat status {};
  ASSERT_EQ(0, stat(IfcfgPath("eth0").c_str(), &status));
  EXPECT_EQ(0640U, status.st_mode & 07777);
  EXPECT_EQ(12U, status.st_uid);
  EXPECT_EQ(34U, status.st_gid);
}

TEST_F(BondRollback, NoneThatCannotBeWrittenIsTold) {
  WriteIfcfg("bond0", "BOOTPROTO=static\nIPADDR=10.0.0.5\n");
  WriteIfcfg("eth0", Joined("eth0", ""));
  WriteIfcfg("eth1", Joined("eth1", "BOOTPROTO=static\nIPADDR=10.0.0.5\n"));
  Shell("mount --bind " + IfcfgPath("eth1") + " " + IfcfgPath("eth1"));
  auto record = Record(ZARNBOND_NONE, {"eth0", "eth1"});
  REFUSED(ZARNNETERR_NO_MEMORY, ZARNNetLinkAggrConfDel(&record));
}

TEST_F(BondRollback, FilesKeepTheirModeUnderAStrictUmask) {
  umask(077);
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  WriteIfcfg("eth1", "BOOTPROTO=dhcp\n");
  auto record = Record(ZARNBOND_ACTIVE_BACKUP, {"eth0", "eth1"});
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&record)) << LogText();
  EXPECT_EQ(0644, FileMode(IfcfgPath("bond0")));
  ASSERT_EQ(0, ZARNNetLinkAggrConfSetSlave("eth1", 0, nullptr));
  EXPECT_EQ(0644, FileMode(IfcfgPath("eth1.saved")));
}

TEST_F(BondRollback, LeasesAreRootsOwnFilesOnly) {
  const std::string lease = "/tmp/dhcpv4.leases.";
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  WriteFile(lease + "eth0", "interface eth0\n", 0600);
  WriteFile("/etc/precious", "eth0\n");
  ASSERT_EQ(0, symlink("/etc/precious", (lease + "bond0").c_str()));
  auto record = Record(ZARNBOND_ACTIVE_BACKUP, {"eth0", "eth1"});
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&record)) << LogText();
  EXPECT_EQ("eth0\n", ReadFile("/etc/precious"));
  EXPECT_EQ("interface bond0\n", ReadFile(lease + "bond0"));
  EXPECT_EQ(0600, FileMode(lease + "bond0"));
  ASSERT_EQ(0, chown((lease + "eth0").c_str(), 12, 34));
  WriteFile(lease + "bond0", "kept\n");
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&record)) << LogText();
  EXPECT_EQ("kept\n", ReadFile(lease + "bond0")) << "another user's lease is none";
}

TEST_F(BondRollback, AFileThatCannotBeReadIsNotTakenForOneWithoutAddress) {
  WriteFile(IfcfgPath("eth0") + "/in/the/way", "");
  REFUSED(ZARNNETERR_READ, ZARNNetLinkAggrConfSetSlave("eth0", 0, nullptr));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetLinkAggrConfSetSlave("-i", 0, nullptr));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetLinkAggrConfSetSlave("eth0", 1, "--help"));
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(0U, ZARNNetLinkAggrStringToMode(nullptr));
  EXPECT_EQ(ZARNNETERR_BAD_PARAMETER, KOPACErrGet());
}

}  // namespace
