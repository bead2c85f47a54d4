// SPDX-License-Identifier: Apache-2.0
// zarnnetctl gateway and route: the default gateway, in the kernel and as it is stored; the routes
// to the subnets that the appliance is in.
#include <array>

#include "commands.h"
#include "kernel_routes.h"
#include "plan.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

// ---- gateway

// Which of the two gateways a verb is about.
struct Target {
  bool saved = false;
  [[nodiscard]] std::string What(const std::string& verb) const {
    return "cannot " + verb + (saved ? " the stored gateway" : " the default gateway");
  }
};

Json GatewayJson(const Target& target) {
  const std::string what = target.What("read");
  std::array<char, 64> gateway{};
  ForgetErrors();
  if (target.saved) {
    if (ZARNNetDefaultGatewayGetConf(gateway.data(), int{gateway.size()}) < 0) Fail(what);
    return {{"gateway", TextOrNull(gateway.data())}, {"saved", true}};
  }
  std::array<char, 16> ifname{};
  if (DefaultGatewayGet(gateway.data(), int{gateway.size()}, ifname.data(), int{ifname.size()}) < 0)
    Fail(what);
  return {{"gateway", TextOrNull(gateway.data())},
          {"interface", TextOrNull(ifname.data())},
          {"saved", false}};
}

void GetGateway(const Context& context, const Target& target) {
  const Json state = GatewayJson(target);
  if (context.json) return PrintJson("gateway", state);
  std::vector<Row> rows{{{"gateway"}, {TextIn(state, "gateway")}}};
  if (!target.saved) rows.push_back({{"interface"}, {TextIn(state, "interface")}});
  PrintTable(rows);
}

std::shared_ptr<Target> AddSaved(const Verb& verb) {
  auto target = std::make_shared<Target>();
  verb.AddFlag("--saved", target->saved, "The stored one, used at start-up, not the kernel's");
  return target;
}

void AddGateway(const Group& app, Context& context) {
  const Group group = AddGroup(app, "gateway", "Reads and changes the IPv4 default gateway");
  const Verb get =
      AddVerb(group, context, "get", "Shows the kernel's default gateway, or the stored one",
              "  zarnnetctl gateway get\n  zarnnetctl gateway get --saved");
  const auto shown = AddSaved(get);
  get.Run([&context, shown] { GetGateway(context, *shown); });
  const Verb set = AddChange(group, context, "set", "Replaces the default route, and stores it",
                             "  zarnnetctl gateway set 192.168.50.1");
  const auto address = AddOperand(set, "ADDRESS", "IPv4 address of the gateway");
  set.Run([&context, address] { MakeChange(context, {{"routes", {{"gateway", *address}}}}); });
  const Verb clear =
      AddChange(group, context, "clear", "Removes the default route, stored and live",
                "  zarnnetctl gateway clear");
  clear.Run([&context] { MakeChange(context, {{"routes", {{"gateway", nullptr}}}}); });
}

// ---- route

constexpr unsigned kInstall = 0;
constexpr unsigned kRemove = 1;

// The library edits the routes of usable interfaces alone, and answers 0 for the others, too.
void RequireEffect(const std::string& what, const std::string& ifname, unsigned op) {
  const bool there = HasSubnetRoute(ifname);
  if (there == (op == kInstall)) return;
  throw Failure(what, std::nullopt,
                there ? "the route is still there"
                      : "there is none: " + ifname + " needs a fixed address, and carrier",
                kOtherwise);
}

void EditRoute(Context& context, const std::string& ifname, unsigned op) {
  const std::string what = std::string("cannot ") + (op == kInstall ? "add" : "delete") +
                           " the subnet route of " + ifname;
  RequireRootToAct(context, what);
  RequireInterface(what, ifname);
  if (context.change.plan)
    return ShowPlan(context, {{"NetRoutetableHandler", std::to_string(op), ifname}});
  ForgetErrors();
  if (NetRoutetableHandler(op, ifname.c_str()) < 0) Fail(what);
  RequireEffect(what, ifname, op);
  if (context.json) PrintJson("route", {{"name", ifname}});
}

void CheckRoutes(Context& context) {
  const std::string what = "cannot check the subnet routes";
  RequireRootToAct(context, what);
  if (context.change.plan) return ShowPlan(context, {{"NetRoutetableCheck"}});
  ForgetErrors();
  if (NetRoutetableCheck() < 0) Fail(what);
  if (context.json) PrintJson("route", Json::object());
}

void AddRoute(const Group& app, Context& context) {
  const Group group = AddGroup(app, "route", "Puts the routes to the appliance's subnets right");
  AddAct(group, context, "check",
         "Removes the subnet routes of interfaces that are up without carrier",
         "  zarnnetctl route check", CheckRoutes);
  const Verb add =
      AddAct(group, context, "add", "Routes the subnet of a fixed address through its interface",
             "  zarnnetctl route add eth0");
  const auto added = AddIfname(add);
  add.Run([&context, added] { EditRoute(context, *added, kInstall); });
  const Verb del = AddAct(group, context, "del", "Removes the route to an interface's subnet",
                          "  zarnnetctl route del eth0");
  const auto deleted = AddIfname(del);
  del.Run([&context, deleted] { EditRoute(context, *deleted, kRemove); });
}

}  // namespace

void AddRouteCommands(const Group& app, Context& context) {
  AddGateway(app, context);
  AddRoute(app, context);
}

}  // namespace tool
