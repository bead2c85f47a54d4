// SPDX-License-Identifier: Apache-2.0
// Addresses in use: what the probe is asked, how its answer is taken, and a bond's own members.
#include <cstring>

#include <zarnnetsdk/addr.h>

#include "support/transcript.h"

using namespace test;

namespace {

const char kArping[] = "/sbin/arping";

void Notice(const char* ifname, const char* address) {
  Say(std::string("told of ") + ifname + " " + address);
}

}  // namespace

TEST(IpConflict, OwnPortsAreNamedToTheProbeUnlessSwitchedOff) {
  for (int i = 4; i < 20; ++i) {
    const std::string n = std::to_string(i);
    Shell("ip link add eth" + n + " type veth peer name far" + n + "; ip link set eth" + n +
          " address 02:00:00:00:01:" + std::to_string(10 + i));
  }
  RecordTool(kArping, 1);
  Say("natural order, not more than 16");
  TELL(ZARNIIpConflict("eth0", "10.1.2.3"));
  WriteFile("/etc/zarninfo.conf", "arp_ignore=\"yes\"\n");
  TELL(ZARNIIpConflict("eth0", "10.1.2.3"));
}

TEST(IpConflict, EachEntryIsAskedForAndEachAnswerTaken) {
  WriteFile("/etc/zarninfo.conf", "arp_ignore=\"yes\"\n");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  Mask("# IpConflictDetectInternal.([0-9]+)", "#");
  WriteFile(kArping, "#!/bin/sh\nexit ${9##*.}\n", 0755);  // the last part of the address
  const List names({"eth0", "eth1", "eth2"});
  const List three({"1.1.1.0", "1.1.1.2", "1.1.1.9"});
  const List conflicts({"1.1.1.1", "no", "1.1.2.1"});
  TELL(IpConflictDetectInternal(List({"a", "b", "c"}), three, Notice));
  TELL(IpConflictDetectInternal(names, conflicts, Notice));
  RecordTool(kArping);
  Say("the others have no address");
  TELL(IpConflictDetectInternal(names, nullptr, nullptr));
  Say("its own address; an interface without an address");
  TELL(ZARNIIpConflict("eth0", "192.168.50.10"));
  TELL(ZARNIIpConflict("eth1", "192.168.50.10"));
  RemoveFile(kArping);
  TELL(ZARNIIpConflict("eth1", "1.1.1.1"));
  TELL(IpConflictDetectInternal(names, List({"1.1.1.1"}), Notice));
  TELL(IpConflictDetectInternal(nullptr, nullptr, Notice));
}

TEST(BondIpConflict, IsAMemberButTheFirstWithTheBondsAddress) {
  MountEmpty("/sys/class/net");
  WriteFile("/sys/class/net/bond0/bonding/slaves", "eth10 eth0 eth2\n");
  WriteFile("/sys/class/net/bond0/bonding/mode", "active-backup 1\n");
  for (const char* name : {"bond0", "eth0", "eth2"})
    WriteIfcfg(name, "BOOTPROTO=static\nIPADDR=10.0.0.5");
  WriteIfcfg("eth10", "BOOTPROTO=static\n");
  char port[8];
  std::memset(port, 'x', sizeof port);
  TELL(ZARNNetBondIPConflict("bond0", port, 1));
  EXPECT_EQ("eth2xxxx", std::string(port, 8)) << "eth10 has none, eth0 is the first";
  WriteIfcfg("eth2", "BOOTPROTO=static\nIPADDR=10.0.0.50\n");
  TELL(ZARNNetBondIPConflict("bond0", port, 8));
  WriteIfcfg("eth10", "BOOTPROTO=static\nIPADDR=10.0.0.5\n");
  TELL(ZARNNetBondIPConflict("bond0", port, 8));
  EXPECT_STREQ("eth1", port);
}
