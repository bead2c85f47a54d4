// SPDX-License-Identifier: Apache-2.0
// Thirty-two interfaces of every sort that the kernel has drivers for: which of them each selector
// lists, and each record against what iproute2 says.
#include <map>
#include <net/if.h>

#include "machine.h"

using namespace test;

namespace {

constexpr int kRoom = 32;

void MakeThem() {
  // Left out of the table altogether, and without part in its 32 places.
  Do("ip link add docker0 type bridge; ip link add dplv1 type dummy; ip tuntap add tap0 mode tap; "
     "for link in docker0 dplv1 tap0; do ip link set $link up; done");
  Do("add() { name=$1; shift; ip link add $name type \"$@\"; };"
     "vlan() { ip link add link $1 name $1.$2 type vlan id $2; };"
     "add bond0 bond mode 802.3ad miimon 100; add bond1 bond mode active-backup;"
     "for slave in eth2 eth3; do ip link set $slave master bond0; done;"
     "for bridge in br0 br7 gbr0; do add $bridge bridge; done; ip link set eth1 master br0;"
     "add gwlan0 dummy; add wlan0 dummy; vlan eth0 10; vlan eth0 9; vlan eth0 30; vlan bond0 5;"
     "vlan br0 8; ip link add mac0 link eth0 type macvlan mode bridge; add v1 veth peer name v2;"
     "add v3 veth peer name v10; ip link set v3 master br0;"
     "add gre1 gre remote 10.9.9.9 local 10.9.9.8; add sit1 sit remote 10.9.9.9 local 10.9.9.8;"
     "add wg0 wireguard; add vx0 vxlan id 7 dev eth0 dstport 4789; ip tuntap add tun0 mode tun;"
     "add ifb7 ifb");
  for (const auto& link : Ip("link"))
    if (link["ifname"] != "eth0.30" && link["ifname"] != "v2" &&
        !Contains(link["ifname"].get<std::string>(), "sit0"))
      Shell("ip link set " + link["ifname"].get<std::string>() + " up");
  Do("ip address add 10.1.0.1/8 dev eth0; ip address add 10.2.0.1/20 dev eth0.9;"
     "ip address add 10.3.0.1/31 dev bond0; ip address add 10.4.0.1 peer 10.4.0.2/32 dev tun0;"
     "ip address add 10.5.0.1/22 dev br0; ip address add 10.5.0.2/25 dev br0");
  for (const char* top : {"eth0.9", "bond0.5", "br0.8", "mac0", "v10"})  // carriers settle
    EXPECT_TRUE(Within(10, [top] { return Link(top)["operstate"] == "UP"; })) << top;
}

// The address that was given first, with its mask.
const std::map<std::string, std::pair<std::string, std::string>> kAddresses{
    {"lo", {"127.0.0.1", "255.0.0.0"}},        {"eth0", {"10.1.0.1", "255.0.0.0"}},
    {"eth0.9", {"10.2.0.1", "255.255.240.0"}}, {"bond0", {"10.3.0.1", "255.255.255.254"}},
    {"tun0", {"10.4.0.1", "255.255.255.255"}}, {"br0", {"10.5.0.1", "255.255.252.0"}}};

using Records = std::vector<KOPANetIfInfo>;

// What a call with room for so many records fills.
template <typename Call>
Records RecordsOf(const Call& call) {
  Records records(kRoom, KOPANetIfInfo{});
  const int count = call(records.data());
  EXPECT_LE(0, count);
  records.resize(static_cast<std::size_t>(std::max(count, 0)));
  return records;
}

Lines Names(const Records& records) {
  Lines names;
  for (const KOPANetIfInfo& record : records)
    names.emplace_back(record.name);
  return names;
}

void ExpectRecord(const nlohmann::json& link, const KOPANetIfInfo& record) {
  SCOPED_TRACE(link["ifname"].get<std::string>());
  const std::string state = link["operstate"];
  EXPECT_EQ(state == "UP" || state == "UNKNOWN" ? 2 : 0, record.link) << state;
  const std::pair<const char*, int> flags[] = {{"UP", IFF_UP},
                                               {"MASTER", IFF_MASTER},
                                               {"SLAVE", IFF_SLAVE},
                                               {"POINTOPOINT", IFF_POINTOPOINT}};
  for (const auto& [name, bit] : flags) {
    const bool has =
        std::find(link["flags"].begin(), link["flags"].end(), name) != link["flags"].end();
    EXPECT_EQ(has, (record.flags & bit) != 0) << name;
  }
  EXPECT_EQ(record.flags, static_cast<short>(record.flags));
  if (link["link_type"] == "ether") {
    char mac[18];
    std::snprintf(mac, sizeof mac, "%02x:%02x:%02x:%02x:%02x:%02x", record.mac[0], record.mac[1],
                  record.mac[2], record.mac[3], record.mac[4], record.mac[5]);
    EXPECT_EQ(link["address"], mac);
  }
  const auto address = kAddresses.find(link["ifname"]);
  EXPECT_EQ(address == kAddresses.end() ? "" : address->second.first, record.ip);
  EXPECT_EQ(address == kAddresses.end() ? "" : address->second.second, record.mask);
}

}  // namespace

TEST(Enumeration, OfThirtyTwoInterfaces) {
  MakeThem();
  // Each time without what is down, ports of bridges (eth1, v3) and the guests' (gbr0, gwlan0).
  const struct {
    std::vector<unsigned> selectors;
    std::string names;
  } rows[] = {
      // no point-to-point, no bonds, no VLANs
      {{1, 5, 17}, "br0 br7 eth0 eth2 eth3 gre0 ifb7 mac0 v1 v10 vx0 wlan0"},
      // no point-to-point, no slaves, no VLANs
      {{2, 6, 18}, "bond0 bond1 br0 br7 eth0 gre0 ifb7 mac0 v1 v10 vx0 wlan0"},
      // no point-to-point
      {{3, 7, 9, 11, 15, 32},
       "bond0 bond0.5 bond1 br0 br0.8 br7 eth0 eth0.9 eth0.10 eth0.30 eth2 eth3 gre0 ifb7 mac0 "
       "v1 v10 vx0 wlan0"},
      // no slaves
      {{8, 12, 24},
       "bond0 bond0.5 bond1 br0 br0.8 br7 eth0 eth0.9 eth0.10 eth0.30 gre0 gre1 ifb7 mac0 sit1 "
       "tun0 v1 v10 vx0 wg0 wlan0"},
  };
  std::map<std::string, nlohmann::json> links;
  for (const auto& link : Ip("address"))
    links[link["ifname"]] = link;
  ASSERT_EQ(35u, links.size()) << "32, and the three that are left out" << Shell("ip -br link");
  for (const auto& [selectors, names] : rows) {
    for (const unsigned selector : selectors) {
      const Records records = RecordsOf(
          [&](KOPANetIfInfo* table) { return KOPANetGetInterfaceInfo(table, kRoom, selector); });
      Lines expected = Words(names), found = Names(records);
      if ((selector & 3) == 2) {  // the last takes the places of those that were removed
        std::sort(expected.begin(), expected.end());
        std::sort(found.begin(), found.end());
      }
      EXPECT_EQ(expected, found) << selector;
      for (const KOPANetIfInfo& record : records)
        ExpectRecord(links[record.name], record);
    }
  }
  EXPECT_EQ(-1, KOPANetGetInterfaceInfo(nullptr, kRoom, 4));
  EXPECT_EQ(1, ZARNNetIsDevTypeMatch("tun0", 8));
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("tun0", 2));

  const Records up =
      RecordsOf([](KOPANetIfInfo* table) { return KOPANetInterfaceEnum(table, kRoom, 0); });
  EXPECT_EQ(Words("bond0 bond0.5 bond1 br0 br0.8 br7 eth0 eth0.9 eth0.10 eth0.30 eth1 eth2 eth3 "
                  "gbr0 gre0 gre1 gwlan0 ifb7 mac0 sit1 tun0 v1 v3 v10 vx0 wg0 wlan0"),
            Names(up));
  const Records ports =
      RecordsOf([](KOPANetIfInfo* table) { return KOPANetEthEnum(table, kRoom); });
  EXPECT_EQ((Lines{"eth0", "eth1", "eth2", "eth3"}), Names(ports));

  WriteFile("/tmp/net_topology_bridge", "");
  EXPECT_TRUE(FileExists("/sys/class/net/wlan0"));
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("wlan0", 8));
}
