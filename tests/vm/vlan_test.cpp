// VLANs of the kernel's driver.
#include <cstdlib>
#include <map>
#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

using Vlans = std::map<std::string, std::pair<std::string, int>>;

Vlans FromLibrary() {
  KOPANETVLAN* list = nullptr;
  int count = -1;
  EXPECT_EQ(0, KOPANetVlanEnum(&list, &count));
  Vlans vlans;
  for (int i = 0; i < count; ++i)
    vlans[list[i].szName] = {list[i].szRowDev, list[i].id};
  EXPECT_EQ(static_cast<std::size_t>(count), vlans.size());
  std::free(list);
  return vlans;
}

Vlans FromKernel() {
  Vlans vlans;
  for (const auto& link : Ip("link show type vlan"))
    vlans[link["ifname"]] = {link["link"], link["linkinfo"]["info_data"]["id"]};
  return vlans;
}

}  // namespace

TEST(Vlan, OfTheDriverIsAskedForAndListed) {
  EXPECT_EQ(1, KOPANetVlanExist());
  EXPECT_EQ(Vlans{}, FromLibrary());
  Do("ip link add bond0 type bond mode active-backup; ip link add br0 type bridge;"
     "ip link add link eth0 name eth0.10 type vlan id 10; ip link add link eth0 name eth0.4094 type vlan id 4094;"
     "ip link add link bond0 name bond0.7 type vlan id 7; ip link add link br0 name guests type vlan id 300;"
     "ip link add link eth1 name a15letternamexx type vlan id 2");
  EXPECT_EQ(FromKernel(), FromLibrary());
  EXPECT_EQ(5u, FromKernel().size());
  KOPANETVLAN vlan{};
  for (const auto& [name, parentAndId] : FromKernel()) {
    EXPECT_EQ(1, KOPANetVlanGet(name.c_str(), &vlan)) << name;
    EXPECT_EQ(name, vlan.szName);
    EXPECT_EQ(parentAndId.first, vlan.szRowDev);
    EXPECT_EQ(parentAndId.second, vlan.id);
  }
  EXPECT_EQ(1, KOPANetVlanGetByRowDev("bond0", 7, &vlan));
  EXPECT_EQ(0, KOPANetVlanGetByRowDev("bond0", 8, &vlan));
  EXPECT_EQ(0, KOPANetVlanGet("eth0", &vlan));
  Do("ip link delete eth0.10");
  EXPECT_EQ(0, KOPANetVlanGet("eth0.10", &vlan));
  EXPECT_EQ(FromKernel(), FromLibrary());
}
