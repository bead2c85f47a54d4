// A VLAN through its life: made on a port, reached from the tagged side,
// removed.
#include <cstdlib>

#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

std::string Address(const std::string& ifname) {
  const auto link = Ip("-4 address show dev " + ifname);
  return link.empty() || link[0]["addr_info"].empty()
             ? ""
             : link[0]["addr_info"][0]["local"].get<std::string>();
}

bool TaggedSideReaches(const std::string& address) {
  return Within(10, [&] {
    return Contains(Shell("ip netns exec lan ping -c 1 -W 1 " + address), "1 received");
  });
}

}  // namespace

TEST(VlanChange, MadeReachedAndRemoved) {
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
  const auto link = Ip("link show dev eth0.10");
  EXPECT_EQ(10, link[0]["linkinfo"]["info_data"]["id"]);

  Do("ip -n lan link set lan0 nomaster; ip -n lan link add link lan0 name "
     "tagged type vlan id 10;"
     "ip -n lan link set tagged up; ip -n lan address add 10.10.0.2/24 dev "
     "tagged");
  EXPECT_TRUE(TaggedSideReaches("10.10.0.1")) << Shell("ip -d address");

  KOPANETVLAN* list = nullptr;
  int count = 0;
  ASSERT_EQ(0, KOPANetVlanEnum(&list, &count));
  ASSERT_EQ(1, count);
  EXPECT_STREQ("eth0.10", list[0].szName);
  EXPECT_STREQ("eth0", list[0].szRowDev);
  EXPECT_EQ(10, list[0].id);
  std::free(list);
  EXPECT_EQ(-1, KOPANetVlanCreate("eth0", 11, &settings));

  ASSERT_EQ(0, KOPANetVlanRemove("eth0.10")) << LogText();
  EXPECT_FALSE(FileExists("/sys/class/net/eth0.10"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth0.10")));
  EXPECT_EQ("10.10.0.1", Address("eth0")) << ReadIfcfg("eth0");
  Do("ip -n lan link delete tagged; ip -n lan address add 10.10.0.2/24 dev "
     "lan0");
  EXPECT_TRUE(TaggedSideReaches("10.10.0.1"));
}
