// SPDX-License-Identifier: Apache-2.0
// The rule about MTUs: what a port sends, everything below it has to carry.
#include <algorithm>

#include "rules/rule.h"

namespace change {
namespace {

constexpr long kLeastOfIpv6 = 1280;
constexpr long kUsual = 1500;

std::string Bytes(long mtu) {
  return std::to_string(mtu);
}

void CheckDriver(const KernelLink& link, long mtu, const Path& path, Findings* findings) {
  const bool least = link.leastMtu > 0 && mtu < link.leastMtu;
  const bool most = link.mostMtu > 0 && mtu > link.mostMtu;
  if (!least && !most) return;
  findings->Add("mtu_of_the_driver", path, Severity::kRefused,
                "the driver of " + link.name + " takes " + Bytes(link.leastMtu) + " to " +
                    (link.mostMtu > 0 ? Bytes(link.mostMtu) : "any") + ", not " + Bytes(mtu));
}

void CheckNeighbours(const Change& change, const std::string& ifname, long mtu, const Path& path,
                     Findings* findings) {
  for (const std::string& vlan : change.VlansOver(ifname)) {
    const long others = NumberOf(At(change.wanted, "interfaces" / vlan / "mtu"), kUsual);
    if (others <= mtu) continue;
    findings->Add("mtu_of_the_vlan", path, Severity::kInsistable,
                  "the VLAN " + vlan + " sends " + Bytes(others) + " bytes over " + ifname +
                      ": lower the VLAN's MTU in the same change");
  }
  const std::string parent = TextOf(At(change.wanted, "vlans" / ifname / "parent"));
  const long below = NumberOf(At(change.wanted, "interfaces" / parent / "mtu"), kUsual);
  // The setter takes the parent along, up to what its driver can.
  const KernelLink* const link = parent.empty() ? nullptr : change.kernel.Link(parent);
  if (link != nullptr && mtu > below && link->mostMtu > 0 && mtu > link->mostMtu) {
    findings->Add("mtu_of_the_parent", path, Severity::kRefused,
                  parent + " carries at most " + Bytes(link->mostMtu) + " bytes: choose no more");
  }
}

}  // namespace

void MtuIsCarried(const Change& change, Findings* findings) {
  for (const std::string& ifname : change.NamedIn(Path("/interfaces"))) {
    const Path path = "interfaces" / ifname / "mtu";
    if (!change.Concerns(path)) continue;
    const long mtu = NumberOf(At(change.wanted, path), kUsual);
    if (const KernelLink* const link = change.kernel.Link(ifname))
      CheckDriver(*link, mtu, path, findings);
    CheckNeighbours(change, ifname, mtu, path, findings);
    const std::string v6 = TextOf(At(change.wanted, "interfaces" / ifname / "ipv6" / "method"));
    if (mtu < kLeastOfIpv6 && !v6.empty() && v6 != "off") {
      findings->Add("mtu_of_ipv6", path, Severity::kInsistable,
                    "IPv6 needs 1280 bytes and ends on " + ifname +
                        ": choose 1280 or more, or switch IPv6 off in the same change");
    }
  }
}

}  // namespace change
