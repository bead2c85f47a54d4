// SPDX-License-Identifier: Apache-2.0
// An address goes from a port to the bond over it, which the DHCP server serves from then on.
#include "change/moves.h"

#include <zarnnetchange/change.h>

#include "machine.h"

using namespace test;

TEST(Moves, FromAPortToTheBondOverIt) {
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  const char* const wish =
      R"({"dhcp_server":{"enabled":true,"interfaces":{"bond0":{"ipv4":{"subnets":{"0":{"prefix":24,)"
      R"("start":"192.168.50.100","end":"192.168.50.150"}}}}}},"interfaces":{"eth0":{"ipv4":null},)"
      R"("bond0":{"ipv4":{"address":"192.168.50.10","prefix":24}}},)"
      R"("bonds":{"bond0":{"mode":"active-backup","slaves":["eth0","eth1"]}}})";
  char* report = nullptr;
  int result = -1;
  const auto interruptions = InterruptionsIn(
      [&] { result = ZARNNetChangeApply(wish, nullptr, nullptr, nullptr, &report); });
  EXPECT_EQ(result, ZARNNETCHANGE_DONE) << report;
  ZARNNetChangeFree(report);
  for (const auto& [ifname, count] : interruptions)
    EXPECT_LE(count, 1) << ifname;
  EXPECT_EQ(Members("bond0"), (Lines{"eth0", "eth1"}));
  EXPECT_EQ(Address("bond0"), "192.168.50.10");
  EXPECT_EQ(Address("eth0"), "");
}

namespace {

const std::string kAddress = R"({"ipv4":{"address":"192.168.50.10","prefix":24}})";
const std::string kBond = R"({"mode":"active-backup","slaves":["eth0","eth1"]})";

void ExpectAt(const std::string& ifname, const std::string& master, const Lines& ports) {
  EXPECT_EQ(Address(ifname), "192.168.50.10") << Shell("ip address");
  EXPECT_EQ(Members(master), ports);
}

const std::string kVlanOnBond =
    R"({"vlans":{"bond0.7":{}},"interfaces":{"eth0":{"ipv4":null},"bond0.7":)" + kAddress +
    R"(},"bonds":{"bond0":)" + kBond + "}}";

}  // namespace

// The drivers take what is over an interface away with it, and a setter restarts what is under.
TEST(Moves, ThroughBondsUnderAVlan) {
  SleepForReal();
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  MakeInOneGo({kVlanOnBond});
  ExpectAt("bond0.7", "bond0", {"eth0", "eth1"});
  MakeInOneGo({R"({"bonds":{"bond0":{"slaves":["eth0","eth1","eth2"]}}})"});
  ExpectAt("bond0.7", "bond0", {"eth0", "eth1", "eth2"});
  MakeInOneGo(
      {R"({"bonds":{"bond0":{"slaves":["eth0","eth1"]}},"bridges":{"br0":{"ports":["eth2"]}}})"});
  ExpectAt("bond0.7", "bond0", {"eth0", "eth1"});
}

TEST(Moves, FromBondsAndVlansToOthers) {
  SleepForReal();
  char* report = nullptr;
  ASSERT_EQ(0, ZARNNetChangeApply(kVlanOnBond.c_str(), nullptr, nullptr, nullptr, &report))
      << report;
  ZARNNetChangeFree(report);
  const auto again = ZARNNETCHANGE_NOT_FOUND;
  MakeInOneGo(
      {R"({"bonds":{"bond0":null,"bond1":)" + kBond +
       R"(},"vlans":{"bond0.7":null,"bond1.7":{}},"interfaces":{"bond1.7":)" + kAddress + "}}"},
      again);
  ExpectAt("bond1.7", "bond1", {"eth0", "eth1"});
  MakeInOneGo({R"({"vlans":{"bond1.7":null,"eth2.9":{}},"bonds":{"bond1":null},"bridges":{"br0":)"
               R"({"ports":["eth0","eth1"]}},"interfaces":{"br0":)" +
               kAddress + "}}"},
              again);
  EXPECT_TRUE(Contains(Shell("cat /var/log/plugin-events.log"),
                       "IFNAME_1=eth0 IFNAME_2=eth1 IFNAME_COUNT=2 ORIGIN_IFNAME_1=bond1"));
  ExpectAt("br0", "br0", {"eth0", "eth1"});
  MakeInOneGo({R"({"vlans":{"eth2.9":null},"bridges":{"br0":{"ports":["eth0"]}},"bonds":{"bond0":)"
               R"({"mode":"balance-rr","slaves":["eth1","eth2"]}}})"},
              again);
  ExpectAt("br0", "br0", {"eth0"});
  EXPECT_EQ(Members("bond0"), (Lines{"eth1", "eth2"}));
}

// What stands on what decides, not what kind it is.
TEST(Moves, BridgesOfBondsUnderVlans) {
  SleepForReal();
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth3", "192.168.51.10", "255.255.255.0")) << LogText();
  MakeInOneGo({R"({"vlans":{"br0.7":{}},"bridges":{"br0":{"ports":["bond0","eth2"]}},"interfaces":)"
               R"({"br0.7":)" +
               kAddress + R"(},"bonds":{"bond0":)" + kBond + "}}"});
  ExpectAt("br0.7", "br0", {"bond0", "eth2"});
  MakeInOneGo({R"({"bonds":{"bond0":{"mode":"balance-rr"}}})"});
  ExpectAt("br0.7", "bond0", {"eth0", "eth1"});
  EXPECT_EQ(Members("br0"), (Lines{"bond0", "eth2"}));
  MakeInOneGo({R"({"vlans":{"eth2.3":{}},"bridges":{"br0":{"ports":["bond0"]}}})"});
  ExpectAt("br0.7", "br0", {"bond0"});
  MakeInOneGo(
      {R"({"vlans":{"br0.7":null,"eth2.3":null},"bonds":{"bond0":null},"bridges":{"br0":null}})"},
      ZARNNETCHANGE_NOT_FOUND);
  EXPECT_FALSE(FileExists("/sys/class/net/br0"));
  EXPECT_EQ(Ip("link show type vlan").size(), 0U);
}
