// SPDX-License-Identifier: Apache-2.0
// VLANs of the kernel's driver: those that others made, and one through its life.
#include <cstdlib>
#include <map>

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
     "vlan() { ip link add link $1 name $2 type vlan id $3; };"
     "vlan eth0 eth0.10 10; vlan eth0 eth0.4094 4094; vlan bond0 bond0.7 7; vlan br0 guests 300;"
     "vlan eth1 a15letternamexx 2");
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

TEST(Vlan, MadeReachedAndRemoved) {
  SleepForReal();
  Do("/etc/rc.network start eth0");
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  ZARNNETIFSETTINGS settings{};
  settings.blStatic = 1;
  std::snprintf(settings.szIP, sizeof settings.szIP, "10.10.0.1");
  std::snprintf(settings.szMask, sizeof settings.szMask, "255.255.255.0");
  ASSERT_EQ(0, KOPANetVlanCreate("eth0", 10, &settings)) << LogText();
  EXPECT_EQ("10.10.0.1", Address("eth0.10"));
  EXPECT_EQ("", Address("eth0"));
  EXPECT_EQ((Vlans{{"eth0.10", {"eth0", 10}}}), FromKernel());
  EXPECT_EQ(FromKernel(), FromLibrary());
  MakeTaggedSide(10, "10.10.0.2/24");
  EXPECT_TRUE(SecondHostReaches("10.10.0.1")) << Shell("ip -d address");
  EXPECT_EQ(-1, KOPANetVlanCreate("eth0", 11, &settings));

  ASSERT_EQ(0, KOPANetVlanRemove("eth0.10")) << LogText();
  EXPECT_FALSE(FileExists("/sys/class/net/eth0.10"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth0.10")));
  EXPECT_EQ("10.10.0.1", Address("eth0")) << ReadIfcfg("eth0");
  Do("ip -n lan link delete tagged; ip -n lan address add 10.10.0.2/24 dev lan0");
  EXPECT_TRUE(SecondHostReaches("10.10.0.1"));
}
