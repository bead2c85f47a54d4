// SPDX-License-Identifier: Apache-2.0
// Rules about the default gateway.
#include <algorithm>

#include "rules/rule.h"

namespace change {
namespace {

const Path kGateway("/routes/gateway");

// Will an interface be in the subnet of this address?
bool IsReached(const Change& change, std::uint32_t gateway) {
  const auto names = AllInterfaces(change);
  return std::any_of(names.begin(), names.end(), [&](const std::string& ifname) {
    const auto subnet = SubnetOf(change, ifname);
    return subnet && subnet->Holds(gateway) && MasterOf(change, ifname).empty();
  });
}

bool AsksForALease(const Change& change) {
  const auto names = change.NamedIn(Path("/interfaces"));
  return std::any_of(names.begin(), names.end(), [&](const std::string& ifname) {
    return TextOf(At(change.wanted, "interfaces" / ifname / "ipv4" / "method")) == "dhcp";
  });
}

}  // namespace

void GatewayIsReached(const Change& change, Findings* findings) {
  const std::string gateway = TextOf(At(change.wish, kGateway));
  if (gateway.empty() || !change.Concerns(kGateway)) return;
  const std::uint32_t number = NumberOfIpv4(gateway);
  for (const std::string& ifname : AllInterfaces(change)) {
    const auto subnet = SubnetOf(change, ifname);
    if (!subnet || subnet->host != number) continue;
    return findings->Add(
        "gateway_is_own", kGateway, Severity::kRefused,
        gateway + " is this machine's own address at " + ifname + ": name the router's");
  }
  if (!IsReached(change, number)) {
    findings->Add("gateway_unreachable", kGateway, Severity::kRefused,
                  gateway +
                      " is in no subnet of this machine: give an interface an address in its "
                      "subnet first, or in the same change");
  }
}

// The kernel drops a route whose gateway it cannot reach any more.
void GatewayStaysReached(const Change& change, Findings* findings) {
  const KernelRoute* const route = change.kernel.DefaultRoute();
  if (route == nullptr || route->gateway.empty() || change.wish.contains(kGateway)) return;
  const Path path = "interfaces" / route->ifname / "ipv4";
  if (!change.Concerns(path) || AsksForALease(change)) return;
  for (const std::string& ifname : AllInterfaces(change)) {
    const auto subnet = SubnetOf(change, ifname);
    if (!subnet || subnet->address != route->gateway) continue;
    return findings->Add("address_of_gateway", path, Severity::kRefused,
                         route->gateway +
                             " is the default gateway's address: name another one, or another "
                             "gateway in the same change");
  }
  if (IsReached(change, NumberOfIpv4(route->gateway))) return;
  findings->Add("gateway_left_behind", path, Severity::kInsistable,
                "the default gateway " + route->gateway +
                    " would not be reached any more: name "
                    "\"routes\": {\"gateway\": ...} in the same change, or null for none");
}

}  // namespace change
