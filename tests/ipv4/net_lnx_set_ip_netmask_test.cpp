// SPDX-License-Identifier: Apache-2.0
// The fixed address of an interface: file and kernel change together or not at all.
#include <zarnnetsdk/ipv4.h>

#include "support/transcript.h"

using namespace test;

namespace {

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
