// A bridge with two ports, beside one of the local LAN.
#include "machine.h"

using namespace test;

namespace {

std::string Role(const char* ifname) {
  ZARNBRIDGEINFO info{};
  const int role = KOPANETGetBridgeInfo(ifname, &info);
  return std::to_string(role) + " " + std::to_string(info.type) + " " + info.szName + " " +
         info.szRef;
}

Counted Listed(unsigned role) {
  return ListOf([role](PKOPACSZLIST* list) { return KOPANetEnumBridge(list, role); });
}

}  // namespace

TEST(Bridge, AndItsPortsHaveTheirRoles) {
  WriteIfcfg("br0", "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth0\n");
  WriteIfcfg("br1", "DEVICE=br1\nTYPE=bridge\nPRIMARY=eth3\nLOCAL_LAN=yes\n");
  WriteIfcfg("eth0", "DEVICE=eth0\nBRIDGE=br0\n");
  Do("for bridge in br0 br1; do ip link add $bridge type bridge; ip link set $bridge up; done;"
     "ip link set eth0 master br0 up; ip link set eth1 master br0 up; ip link set eth3 master br1; "
     "ip link set eth2 up");
  EXPECT_EQ("2 2 br0 eth0", Role("br0"));
  EXPECT_EQ("3 3 br1 eth3", Role("br1"));
  EXPECT_EQ("4 4 eth0 br0", Role("eth0"));
  EXPECT_EQ("4 4 eth1 ", Role("eth1"));
  EXPECT_EQ("1 1 eth2 ", Role("eth2"));
  EXPECT_EQ("0 0  ", Role("eth3"));
  EXPECT_EQ(1, KOPANetBridgeIfIsSlave("eth3"));
  EXPECT_EQ(0, KOPANetBridgeIfIsSlave("br0"));
  EXPECT_EQ((Counted{1, {"br0"}}), Listed(2));
  EXPECT_EQ((Counted{1, {"br1"}}), Listed(3));

  auto [count, ports] =
      ListOf([](PKOPACSZLIST* list) { return KOPANetBridgeSlaveEnum("br0", list); });
  std::sort(ports.begin(), ports.end());
  EXPECT_EQ(2, count);
  EXPECT_EQ(Members("br0"), ports);
}
