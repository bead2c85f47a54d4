// Addresses in use: what the probe is asked, how its answer is taken, and a bond's own members.
#include <cstring>
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/addr.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kArping[] = "/sbin/arping";
const char kSource[] = "net_ip_conflict";

Lines& Told() {
  static Lines told;
  return told;
}

void Tell(const char* ifname, const char* address) {
  Told().push_back(std::string(ifname) + " " + address);
}

std::string Asked(const std::string& ifname, const std::string& address) {
  return "/sbin/arping -D -q -w 3 -c 3 -I " + ifname + " " + address;
}

std::string Mac(const std::string& ifname) {
  std::string mac = ReadFile("/sys/class/net/" + ifname + "/address");
  std::erase_if(mac, [](char c) { return c == ':' || c == '\n'; });
  return mac;
}

}  // namespace

TEST(IpConflict, OwnPortsAreNamedToTheProbeUnlessSwitchedOff) {
  for (int i = 2; i < 20; ++i)
    Shell("ip link show eth" + std::to_string(i) + " || ip link add eth" + std::to_string(i) +
          " type veth peer name far" + std::to_string(i));
  RecordTool(kArping, 1);
  std::string expected = Asked("eth0", "10.1.2.3") + " -F";
  for (int i = 0; i < 16; ++i)
    expected += " " + Mac("eth" + std::to_string(i));
  EXPECT_EQ(1, ZARNIIpConflict("eth0", "10.1.2.3"));
  EXPECT_EQ(Lines{expected}, RecordedCalls()) << "natural order, not more than 16";
  ExpectLog(LOG_WARNING, kSource,
            "There are over the maximum number (16) support of physical interfaces for "
            "IP conflict detection.");
  EXPECT_NE(std::string::npos, LogText().find("10.1.2.3 is conflict at eth0"));
  WriteFile("/etc/zarninfo.conf", "arp_ignore=\"yes\"\n");
  EXPECT_EQ(1, ZARNIIpConflict("eth0", "10.1.2.3"));
  EXPECT_EQ(Asked("eth0", "10.1.2.3"), RecordedCalls().back());
}

TEST(IpConflict, EachEntryIsAskedForAndEachAnswerTaken) {
  WriteFile("/etc/zarninfo.conf", "arp_ignore=\"yes\"\n");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  WriteFile(kArping, "#!/bin/sh\nexit ${9##*.}\n", 0755);  // the last part of the address
  const List names({"eth0", "eth1", "eth2"});
  EXPECT_EQ(0, IpConflictDetectInternal(List({"a", "b", "c"}),
                                        List({"1.1.1.0", "1.1.1.2", "1.1.1.9"}), Tell));
  EXPECT_EQ(1, IpConflictDetectInternal(names, List({"1.1.1.1", "no", "1.1.2.1"}), Tell));
  EXPECT_EQ((Lines{"eth0 1.1.1.1", "eth2 1.1.2.1"}), Told());
  ExpectLog(LOG_DEBUG, kSource, "1.1.1.0 is not conflict at a");
  ExpectLog(LOG_INFO, kSource, "Invalid parameter to execute arping for 1.1.1.2 at b");
  ExpectLog(LOG_ERR, kSource, "Unknown return value [9] from arping");
  ExpectLog(LOG_ERR, kSource, "[no] is not a valid IP address for eth1");
  RecordTool(kArping);
  EXPECT_EQ(0, IpConflictDetectInternal(names, nullptr, nullptr));
  EXPECT_EQ(Lines{Asked("eth0", "192.168.50.10")}, RecordedCalls()) << "the others have none";
  EXPECT_EQ(0, ZARNIIpConflict("eth0", "192.168.50.10"));
  EXPECT_EQ(1U, RecordedCalls().size()) << "its own address";
  EXPECT_EQ(0, ZARNIIpConflict("eth1", "192.168.50.10")) << "an interface without an address";
  EXPECT_EQ(2U, RecordedCalls().size());
  RemoveFile(kArping);
  EXPECT_EQ(0, ZARNIIpConflict("eth1", "1.1.1.1"));
  ExpectLog(LOG_ERR, kSource, "Failed to execute arping for 1.1.1.1 at eth1");
  REFUSED(0x0D00, IpConflictDetectInternal(names, List({"1.1.1.1"}), Tell));
  REFUSED(0x0D00, IpConflictDetectInternal(nullptr, nullptr, Tell));
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
  EXPECT_EQ(1, ZARNNetBondIPConflict("bond0", port, 1));
  EXPECT_EQ("eth2xxxx", std::string(port, 8)) << "eth10 has none, eth0 is the first";
  ExpectLog(LOG_INFO, "net_bond_ip_conflict", "eth10's IP is empty");
  WriteIfcfg("eth2", "BOOTPROTO=static\nIPADDR=10.0.0.50\n");
  EXPECT_EQ(0, ZARNNetBondIPConflict("bond0", port, 8));
  WriteIfcfg("eth10", "BOOTPROTO=static\nIPADDR=10.0.0.5\n");
  EXPECT_EQ(1, ZARNNetBondIPConflict("bond0", port, 8));
  EXPECT_STREQ("eth1", port);
}
