// SPDX-License-Identifier: Apache-2.0
// zarnnetctl dns: the name servers, those that are fixed and those that the resolver uses.
#include <array>

#include "commands.h"
#include "list.h"
#include "name_servers.h"
#include "plan.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

const char kModes[] = "static, or auto for those that the interfaces learn";

// Anything but "static" makes the resolver use the servers that the interfaces learn.
std::string Mode() {
  std::array<char, 16> mode{};
  const int length =
      KOPACFileGetKeyValue("/etc/zarninfo.conf", "dns_mode", mode.data(), mode.size(), 0);
  return length > 0 && std::string(mode.data()) == "static" ? "static" : "auto";
}

std::vector<std::string> ReadFixed(const std::string& what) {
  NameList servers;
  ForgetErrors();
  if (ZARNNetStaticDNSListGet(servers.Out()) < 0) Fail(what);
  return servers.Items();
}

Json StateJson(const std::string& what) {
  const auto servers = NameServersInUse();
  if (!servers) Fail(what);
  return {{"mode", Mode()}, {"servers", *servers}, {"fixed", ReadFixed(what)}};
}

void Get(const Context& context) {
  const Json state = StateJson("cannot read the name servers");
  if (context.json) return PrintJson("dns", state);
  const auto words = [&state](const char* field) {
    return Join(state[field].get<std::vector<std::string>>(), " ");
  };
  PrintTable({{{"mode"}, {state["mode"].get<std::string>()}},
              {{"servers"}, {words("servers")}},
              {{"fixed"}, {words("fixed")}}});
}

void Set(Context& context, const std::vector<std::string>& addresses) {
  MakeChange(context, {{"dns", {{"servers", addresses}}}});
}

void SetMode(Context& context, const std::string& mode) {
  MakeChange(context, {{"dns", {{"mode", mode}}}});
}

void Update(Context& context) {
  const std::string what = "cannot rebuild the resolver's file";
  RequireRootToAct(context, what);
  if (context.change.plan) return ShowPlan(context, {{"ZARNNetDNSUpdate"}});
  ForgetErrors();
  if (ZARNNetDNSUpdate() < 0) Fail(what);
  if (context.json) PrintJson("dns", StateJson(what));
}

}  // namespace

void AddDnsCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "dns", "Reads and sets the name servers");
  const Verb get =
      AddVerb(group, context, "get", "Shows the mode, the servers in use and the fixed ones",
              "  zarnnetctl dns get");
  get.Run([&context] { Get(context); });
  const Verb set =
      AddChange(group, context, "set", "Fixes the servers, and uses them instead of learned ones",
                "  zarnnetctl dns set 192.168.50.1 2001:db8::53");
  auto addresses = std::make_shared<std::vector<std::string>>();
  set.AddOption("ADDRESS", *addresses, "IPv4 and IPv6 addresses, in order of use").Required();
  set.Run([&context, addresses] { Set(context, *addresses); });
  const Verb mode = AddChange(group, context, "mode", "Chooses which servers are used",
                              "  zarnnetctl dns mode auto");
  auto chosen = std::make_shared<std::string>();
  mode.AddOption("MODE", *chosen, kModes).Required().OneOf({"static", "auto"});
  mode.Run([&context, chosen] { SetMode(context, *chosen); });
  AddAct(group, context, "update", "Rebuilds the resolver's file from the servers in use",
         "  zarnnetctl dns update", Update);
}

}  // namespace tool
