// SPDX-License-Identifier: Apache-2.0
// Rules about IPv4 addresses.
#include <zarnnetsdk/addr.h>

#include "rules/rule.h"

namespace change {
namespace {

// The interfaces whose fixed address is to change, with it.
template <class Look>
void ForEachNewAddress(const Change& change, const Look& look) {
  for (const std::string& ifname : change.NamedIn(Path("/interfaces"))) {
    const Path path = "interfaces" / ifname / "ipv4";
    if (!change.Concerns(path)) continue;
    if (const auto subnet = SubnetOf(change, ifname)) look(ifname, path / "address", *subnet);
  }
}

// Who has the address of an interface in the end: what goes leaves it to what it was made of.
std::string HolderOf(const Change& change, std::string ifname) {
  for (int most = 8; most > 0 && change.Goes(ifname); --most) {  // no machine is made deeper
    const Json& vlan = At(change.before, "vlans" / ifname / "parent");
    const Json& bridge = At(change.before, "bridges" / ifname / "primary");
    const auto slaves = TextsOf(At(change.before, "bonds" / ifname / "slaves"));
    ifname = !vlan.is_null() ? TextOf(vlan) : slaves.empty() ? TextOf(bridge) : slaves.front();
  }
  return ifname;
}

// Does somebody else have this interface's address then, or nobody?
bool GivesAway(const Change& change, const std::string& other, const std::string& ifname) {
  const std::string holder = HolderOf(change, other);
  const bool named = holder != other && change.wish.contains("interfaces" / holder / "ipv4");
  const bool isParent = Has(change.VlansOver(other), ifname);  // the VLAN has its address
  return holder == ifname || named || isParent || !MasterOf(change, holder).empty();
}

}  // namespace

void LoopbackStays(const Change& change, Findings* findings) {
  for (const auto& [name, link] : change.kernel.links) {
    const Path path = "interfaces" / name;
    if (!link.IsLoopback() || !change.wish.contains(path)) continue;
    findings->Add("loopback", path, Severity::kRefused,
                  name +
                      " is how the machine speaks with itself, and keeps its address: name a "
                      "port, a bond, a bridge or a VLAN");
  }
}

void AddressOfAHost(const Change& change, Findings* findings) {
  constexpr std::uint32_t kNoBroadcast = 0xFFFFFFFE;  // from a mask of 31 bits on
  ForEachNewAddress(change, [&](const std::string&, const Path& path, const Subnet& subnet) {
    const auto refuse = [&](const std::string& what) {
      findings->Add("host_address", path, Severity::kRefused,
                    subnet.address + " is " + what + ": hosts have " +
                        Ipv4Text(subnet.Network() + 1) + " to " + Ipv4Text(subnet.Broadcast() - 1));
    };
    if (BlKOPAIsIpAddr(subnet.address.c_str()) != 1) {
      findings->Add("host_address", path, Severity::kRefused,
                    subnet.address +
                        " is no host's address: name one below 224.0.0.0 and outside "
                        "of 127.0.0.0/8");
    } else if (subnet.mask < kNoBroadcast && subnet.host == subnet.Network()) {
      refuse("the address of the subnet itself");
    } else if (subnet.mask < kNoBroadcast && subnet.host == subnet.Broadcast()) {
      refuse("the broadcast address of its subnet");
    }
  });
}

void OneSubnetAPort(const Change& change, Findings* findings) {
  ForEachNewAddress(change, [&](const std::string& ifname, const Path& path, const Subnet& subnet) {
    for (const std::string& other : AllInterfaces(change)) {
      const auto others = SubnetOf(change, other);
      if (!others || GivesAway(change, other, ifname)) continue;
      if (others->host == subnet.host) {
        findings->Add("own_address", path, Severity::kRefused,
                      other + " has the address " + subnet.address +
                          " already: name another one, or change " + other + " with it");
      } else if (others->Holds(subnet.host) || subnet.Holds(others->host)) {
        findings->Add("one_subnet", path, Severity::kInsistable,
                      other + " is in the same subnet (" + others->address +
                          "), and answers would leave by either: use another subnet, or make a "
                          "bond of the two");
      }
    }
  });
}

void AddressIsFree(const Change& change, Findings* findings) {
  if (!change.options.probe) return;
  ForEachNewAddress(change, [&](const std::string& ifname, const Path& path, const Subnet& subnet) {
    const KernelLink* const link = change.kernel.Link(ifname);
    const bool asks = link != nullptr && link->IsUp() && link->carrier;
    if (!asks || ZARNIIpConflict(ifname.c_str(), subnet.address.c_str()) != 1) return;
    findings->Add("address_in_use", path, Severity::kInsistable,
                  "another host at " + ifname + " answers for " + subnet.address +
                      ": use an address that nobody has");
  });
}

}  // namespace change
