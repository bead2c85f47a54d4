// SPDX-License-Identifier: Apache-2.0
// The default gateway of IPv4. Gateways of IPv6 belong to their interfaces.
#include <array>

#include <zarnnetsdk/dns_route.h>

#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

const Path kGateway = "routes" / std::string("gateway");

Shape ShapeOf() {
  return Object(
      "Routes of IPv4",
      {{"gateway", Text("The default gateway", Format::kIpv4, 15).Both()},
       {"interface", Text("The interface that leads to it", Format::kIfname, 15).ReadOnly()}});
}

Json Configured(const View&) {
  std::array<char, 64> gateway{};
  Json routes = Json::object();
  if (ZARNNetDefaultGatewayGetConf(gateway.data(), int{gateway.size()}) == 0)
    Put(&routes, "gateway", gateway.data());
  return routes;
}

Json Live(const View& view, const Json&) {
  Json routes = Json::object();
  if (const KernelRoute* const route = view.kernel.DefaultRoute()) {
    Put(&routes, "gateway", route->gateway);
    routes["interface"] = route->ifname;
  }
  return routes;
}

void Settle(Change* change, Findings*) {
  Json& wish = change->wish["routes"];
  if (wish.is_null()) wish = {{"gateway", nullptr}};
}

void Plan(const Change& change, Steps* steps) {
  if (!change.Concerns(kGateway)) return;
  const std::string gateway = TextOf(At(change.wanted, kGateway));
  const char* const what = gateway.empty() ? "forget the gateway" : "use the gateway ";
  steps->push_back({Phase::kRoute,
                    kGateway,
                    what + gateway + " (stored)",
                    "ZARNNetDefaultGatewaySetConf",
                    {frame::paths::kNetwork},
                    [gateway] { return ZARNNetDefaultGatewaySetConf(gateway.c_str()) == 0; }});
  steps->push_back({Phase::kRoute,
                    kGateway,
                    what + gateway,
                    "ZARNNetDefaultGatewaySet",
                    {frame::paths::kRoute},
                    [gateway] { return ZARNNetDefaultGatewaySet(gateway.c_str()) == 0; }});
}

}  // namespace

const Section kRoutes{"routes", ShapeOf, Configured,   Live,
                      Settle,   Plan,    AwaitNothing, ReviveNothing};

}  // namespace change
