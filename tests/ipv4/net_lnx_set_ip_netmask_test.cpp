// The fixed address of an interface: file and kernel change together or not at all.
#include <zarnnetsdk/ipv4.h>

#include "support/children.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kScripts[] = "/etc/sysconfig/network-scripts";
const char kBond[] = "# port 1\nDEVICE=eth0\nMASTER=bond0\nSLAVE=yes\nBOOTPROTO=dhcp\nMTU=9000";

}  // namespace

TEST(StaticAddress, FileAndKernelAgreeAndNothingIsLeftBehind) {
  WriteIfcfg("eth0", kBond);
  RecordTool("/sbin/stop", 1);
  BringUp("eth0");
  TELL(ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0"));
}

TEST(StaticAddress, AFailureAtAnyStepPutsTheFileBack) {
  WriteIfcfg("eth0", kBond);
  TELL(ZARNILnxSetIPNetmask("eth0", "300.1.1.1", "255.255.255.0"));
  TELL(ZARNILnxSetIPNetmask("eth0", "10.0.0.1", "255.255.x.0"));
  TELL(ZARNILnxSetIPNetmask("eth0", "10.0.0.1\nMASTER=evil", "255.0.0.0"));
  TELL(ZARNILnxSetIPNetmask("eth0", "10.0.0.1", "$(reboot)"));
  TELL(ZARNILnxSetIPNetmask("eth0", "-h", "255.0.0.0"));
  TELL(ZARNILnxSetIPNetmask("-h", "10.0.0.1", "255.0.0.0"));
  RecordTool("/sbin/ifconfig", 1);
  TELL(ZARNILnxSetIPNetmask("eth0", "10.0.0.1", "255.0.0.0"));
  RemoveFile(IfcfgPath("eth1"));
  Say("an interface without a file gets one that stays");
  TELL(ZARNILnxSetIPNetmask("eth1", "192.168.50.11", "255.255.255.0"));
}

TEST(StaticAddress, AFullDiskLeavesTheOldFile) {
  MountEmpty(kScripts, "16k");
  WriteIfcfg("eth0", std::string(4096, '#') + "\nDEVICE=eth0\nBOOTPROTO=dhcp\n");
  FillDisk(kScripts);
  Mask("strerror=([^)]*)", "REASON");
  TELL(ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0"));
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
