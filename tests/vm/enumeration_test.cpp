// Thirty-two interfaces of every sort that the kernel has drivers for, each selector against what iproute2 says.
#include <algorithm>
#include <arpa/inet.h>
#include <map>
#include <net/if.h>
#include <set>
#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

constexpr int kRoom = 32;

void MakeThem() {
  // Left out of the table altogether, and without part in its 32 places.
  Do("ip link add docker0 type bridge; ip link add dplv1 type dummy; ip tuntap add tap0 mode tap; ip link set docker0 up;"
     "ip link set dplv1 up; ip link set tap0 up");
  Do("ip link add bond0 type bond mode 802.3ad miimon 100; ip link set eth2 master bond0; ip link set eth3 master bond0;"
     "ip link add bond1 type bond mode active-backup; ip link add br0 type bridge; ip link set eth1 master br0;"
     "ip link add br7 type bridge; ip link add gbr0 type bridge; ip link add gwlan0 type dummy; ip link add wlan0 type dummy;"
     "ip link add link eth0 name eth0.10 type vlan id 10; ip link add link eth0 name eth0.9 type vlan id 9;"
     "ip link add link eth0 name eth0.30 type vlan id 30; ip link add link bond0 name bond0.5 type vlan id 5;"
     "ip link add link br0 name br0.8 type vlan id 8; ip link add mac0 link eth0 type macvlan mode bridge;"
     "ip link add v1 type veth peer name v2; ip link add v3 type veth peer name v10; ip link set v3 master br0;"
     "ip link add gre1 type gre remote 10.9.9.9 local 10.9.9.8; ip link add sit1 type sit remote 10.9.9.9 local 10.9.9.8;"
     "ip link add wg0 type wireguard; ip link add vx0 type vxlan id 7 dev eth0 dstport 4789; ip tuntap add tun0 mode tun;"
     "ip link add ifb7 type ifb");
  for (const auto& link : Ip("link"))
    if (link["ifname"] != "eth0.30" && link["ifname"] != "v2" && !Contains(link["ifname"], "sit0"))
      Shell("ip link set " + link["ifname"].get<std::string>() + " up");
  Do("ip address add 10.1.0.1/8 dev eth0; ip address add 10.2.0.1/20 dev eth0.9; ip address add 10.3.0.1/31 dev bond0;"
     "ip address add 10.4.0.1 peer 10.4.0.2/32 dev tun0; ip address add 10.5.0.1/22 dev br0; ip address add 10.5.0.2/25 dev br0");
}

bool InTable(const std::string& ifname) {
  return !Contains(ifname, "mon.") && !ifname.starts_with("tap") && !ifname.starts_with("docker") &&
         !ifname.starts_with("dplv");
}

struct Interface {
  nlohmann::json link;
  std::string Name() const { return link["ifname"]; }
  bool Has(const std::string& flag) const {
    return std::find(link["flags"].begin(), link["flags"].end(), flag) != link["flags"].end();
  }
  std::string Info(const char* key) const {
    return link.contains("linkinfo") ? link["linkinfo"].value(key, "") : "";
  }
};

bool IsListed(const Interface& interface, unsigned kind) {
  const std::string name = interface.Name();
  if (Contains(name, "gbr") || Contains(name, "gwlan")) return false;
  if (!interface.Has("UP") || interface.Has("LOOPBACK") || interface.Info("info_slave_kind") == "bridge") return false;
  if (kind != 8 && interface.Has("POINTOPOINT")) return false;
  if (kind == 1 && interface.Has("MASTER")) return false;
  if ((kind == 1 || kind == 2) && interface.Info("info_kind") == "vlan") return false;
  return (kind != 2 && kind != 8) || !interface.Has("SLAVE");
}

Lines InNaturalOrder(const Lines& names) {
  std::string list;
  for (const std::string& name : names)
    list += name + "\n";
  WriteFile("/tmp/names", list);
  return Words(Shell("LC_ALL=C sort -V /tmp/names"));
}

Lines Names(const std::vector<KOPANetIfInfo>& records, int count) {
  Lines names;
  for (int i = 0; i < count; ++i)
    names.emplace_back(records[static_cast<std::size_t>(i)].name);
  return names;
}

std::string Mask(int prefix) {
  const in_addr mask{htonl(prefix == 0 ? 0 : ~0u << (32 - prefix))};
  char text[INET_ADDRSTRLEN];
  return inet_ntop(AF_INET, &mask, text, sizeof text);
}

void ExpectRecord(const Interface& interface, const KOPANetIfInfo& record) {
  const std::string name = interface.Name(), state = interface.link["operstate"];
  EXPECT_EQ(state == "UP" || state == "UNKNOWN" ? 2 : 0, record.link) << name << " " << state;
  EXPECT_EQ(interface.Has("UP"), (record.flags & IFF_UP) != 0) << name;
  EXPECT_EQ(interface.Has("MASTER"), (record.flags & IFF_MASTER) != 0) << name;
  EXPECT_EQ(interface.Has("SLAVE"), (record.flags & IFF_SLAVE) != 0) << name;
  EXPECT_EQ(interface.Has("POINTOPOINT"), (record.flags & IFF_POINTOPOINT) != 0) << name;
  EXPECT_EQ(record.flags, static_cast<short>(record.flags)) << name;
  if (interface.link["link_type"] == "ether") {
    char mac[18];
    std::snprintf(mac, sizeof mac, "%02x:%02x:%02x:%02x:%02x:%02x", record.mac[0], record.mac[1], record.mac[2],
                  record.mac[3], record.mac[4], record.mac[5]);
    EXPECT_EQ(interface.link["address"], mac) << name;
  }
  std::string address, mask;
  for (const auto& entry : interface.link["addr_info"])
    if (entry["family"] == "inet" && address.empty()) address = entry["local"], mask = Mask(entry["prefixlen"]);
  EXPECT_EQ(address, record.ip) << name;
  EXPECT_EQ(address.empty() && record.mask[0] == '\0' ? "" : mask, record.mask) << name;
}

}  // namespace

TEST(Enumeration, OfThirtyTwoInterfacesAgreesWithIproute2) {
  MakeThem();
  std::map<std::string, Interface> interfaces;
  Shell("sleep 2");  // carriers settle
  for (const auto& link : Ip("address"))
    if (InTable(link["ifname"])) interfaces[link["ifname"]] = Interface{link};
  ASSERT_EQ(32u, interfaces.size()) << Shell("ip -br link");

  for (const unsigned selector : {1u, 2u, 3u, 5u, 6u, 7u, 8u, 9u, 11u, 12u, 15u, 17u, 18u, 24u, 32u}) {
    const unsigned kind = selector & ~0x14u;
    Lines expected;
    for (const auto& [name, interface] : interfaces)
      if (IsListed(interface, kind)) expected.push_back(name);
    expected = InNaturalOrder(expected);
    std::vector<KOPANetIfInfo> records(kRoom, KOPANetIfInfo{});
    const int count = KOPANetGetInterfaceInfo(records.data(), kRoom, selector);
    ASSERT_EQ(static_cast<int>(expected.size()), count) << selector;
    Lines names = Names(records, count);
    if (kind == 2) names = InNaturalOrder(names);  // the last takes the places of those that were removed
    EXPECT_EQ(expected, names) << selector;
    for (int i = 0; i < count; ++i)
      ExpectRecord(interfaces[records[static_cast<std::size_t>(i)].name], records[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(-1, KOPANetGetInterfaceInfo(nullptr, kRoom, 4));
  EXPECT_EQ(1, ZARNNetIsDevTypeMatch("tun0", 8));
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("tun0", 2));

  Lines up, ports;
  for (const auto& [name, interface] : interfaces) {
    if (!interface.Has("UP") || interface.Has("LOOPBACK")) continue;
    up.push_back(name);
    if (name.starts_with("eth") && interface.Info("info_kind") != "vlan") ports.push_back(name);
  }
  std::vector<KOPANetIfInfo> records(kRoom, KOPANetIfInfo{});
  EXPECT_EQ(InNaturalOrder(up), Names(records, KOPANetInterfaceEnum(records.data(), kRoom, 0)));
  EXPECT_EQ(ports, Names(records, KOPANetEthEnum(records.data(), kRoom)));

  WriteFile("/tmp/net_topology_bridge", "");
  EXPECT_EQ(1, interfaces.count("wlan0"));
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("wlan0", 8));
}
