// The fixed address of an interface: file and kernel change together or not at all.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/ipv4.h>

#include "support/appliance.h"
#include "support/children.h"

using namespace test;

namespace {

const char kScripts[] = "/etc/sysconfig/network-scripts";
const char kBond[] = "# port 1\nDEVICE=eth0\nMASTER=bond0\nSLAVE=yes\nBOOTPROTO=dhcp\nMTU=9000";

Lines FilesOf(const std::string& ifname) {
  Lines found;
  for (const std::string& name : FolderEntries(kScripts)) {
    if (name.starts_with("ifcfg-" + ifname)) found.push_back(name);
  }
  return found;
}

}  // namespace

TEST(StaticAddress, FileAndKernelAgreeAndNothingIsLeftBehind) {
  WriteIfcfg("eth0", kBond);
  RecordTool("/sbin/stop", 1);
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  EXPECT_EQ(
      "# port 1\nDEVICE=eth0\nBOOTPROTO=static\nMTU=9000\nONBOOT=yes\nIPADDR=192.168.50.10\n"
      "NETMASK=255.255.255.0\n",
      ReadIfcfg("eth0"));
  EXPECT_NE(std::string::npos, Shell("ip -4 address show eth0").find("inet 192.168.50.10/24"));
  EXPECT_EQ((Lines{"ifcfg-eth0"}), FilesOf("eth0"));
  EXPECT_EQ((Lines{"/sbin/stop dhcp-client IFACE=eth0"}), RecordedCalls());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_lnx_set_ip_netmask",
                        "unable to stop dhcp-client instance on eth0"));
}

TEST(StaticAddress, AnInterfaceWithoutAFileGetsOneThatStaysAlsoAfterAFailure) {
  RemoveFile(IfcfgPath("eth1"));
  RecordTool("/sbin/ifconfig", 1);
  EXPECT_EQ(-1, ZARNILnxSetIPNetmask("eth1", "192.168.50.11", "255.255.255.0"));
  EXPECT_NE(std::string::npos, LogText().find("net_lnx_set_ip_netmask:")) << LogText();
  EXPECT_NE(std::string::npos, LogText().find("copy (" + IfcfgPath("eth1"))) << LogText();
  EXPECT_EQ((Lines{"ifcfg-eth1"}), FilesOf("eth1"));
  EXPECT_NE(std::string::npos, ReadIfcfg("eth1").find("IPADDR=192.168.50.11\n"));
}

TEST(StaticAddress, AFailureAtAnyStepPutsTheFileBack) {
  WriteIfcfg("eth0", kBond);
  const auto fails = [](const char* ip, const char* mask, const char* why) {
    EXPECT_EQ(-1, ZARNILnxSetIPNetmask("eth0", ip, mask)) << why;
    EXPECT_EQ(kBond, ReadIfcfg("eth0")) << why;
    EXPECT_EQ((Lines{"ifcfg-eth0"}), FilesOf("eth0")) << why;
  };
  fails("300.1.1.1", "255.255.255.0", "not an address");
  fails("10.0.0.1", "255.255.x.0", "not a netmask");
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_lnx_set_ip_netmask", "calculate prefix length failed"));
  fails("10.0.0.1\nMASTER=evil", "255.0.0.0", "a line smuggled in");
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_lnx_set_ip_netmask", "Set " + IfcfgPath("eth0") + " error."));
  RecordTool("/sbin/ifconfig", 1);
  fails("10.0.0.1", "255.0.0.0", "ifconfig fails");
  EXPECT_LE(1, LogCount(LOG_ERR, "net_lnx_set_ip_netmask",
                        "excute command /usr/zarn/sbin/zarnnet--set_ip failed"));
  EXPECT_EQ(std::string::npos, Shell("ip -4 address show eth0").find("inet "));
}

TEST(StaticAddress, AFullDiskLeavesTheOldFile) {
  MountEmpty(kScripts, "16k");
  std::string big(4096, '#');
  big += "\nDEVICE=eth0\nBOOTPROTO=dhcp\n";
  WriteIfcfg("eth0", big);
  FillDisk(kScripts);
  EXPECT_EQ(-1, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0"));
  EXPECT_EQ(big, ReadIfcfg("eth0"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_lnx_set_ip_netmask", "Set " + IfcfgPath("eth0") + " error."));
}

TEST(StaticAddress, BadArgumentsChangeNothing) {
  const std::string before = ReadIfcfg("eth0");
  const char* const cases[][3] = {
      {nullptr, "10.0.0.1", "255.0.0.0"},  {"", "10.0.0.1", "255.0.0.0"},
      {"eth0", nullptr, "255.0.0.0"},      {"eth0", "", "255.0.0.0"},
      {"eth0", "10.0.0.1", nullptr},       {"eth0", "10.0.0.1", ""},
      {"../eth0", "10.0.0.1", "255.0.0.0"}};
  for (const auto& c : cases) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNILnxSetIPNetmask(c[0], c[1], c[2]));
    EXPECT_EQ(0x0D00, KOPACErrGet());
    EXPECT_STREQ("net_lnx_set_ip_netmask", KOPACErrorGetFile());
  }
  EXPECT_EQ(before, ReadIfcfg("eth0"));
}

TEST(StaticAddress, AKilledCallerLeavesAWholeFile) {
  WriteIfcfg("eth0", kBond);
  for (int delay = 0; delay < 24; ++delay) {
    const pid_t child =
        Start([] { return ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0"); });
    ::poll(nullptr, 0, delay);
    KillAndReap(child);
    const std::string text = ReadIfcfg("eth0");
    const bool whole = text == kBond || text.ends_with("NETMASK=255.255.255.0\n");
    EXPECT_TRUE(whole) << "after " << delay << " ms: " << text;
  }
  EXPECT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.12", "255.255.255.0")) << "no lock is left";
}
