// SPDX-License-Identifier: Apache-2.0
// zarnnetctl mtu and hostname: the MTU of an interface, the name of the appliance.
#include <array>

#include "commands.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

// ---- mtu

Json MtuJson(const std::string& what, const std::string& ifname) {
  ForgetErrors();
  const int live = ZARNGetMTU(ifname.c_str());
  if (live < 0) Fail(what);
  std::array<char, 16> configured{};
  const bool has =
      ZARNConfGetMTUValue(ifname.c_str(), configured.data(), int{configured.size()}) >= 0;
  return {
      {"name", ifname}, {"mtu", live}, {"configured", TextOrNull(has ? configured.data() : "")}};
}

void GetMtu(const Context& context, const std::string& ifname) {
  const std::string what = "cannot read the MTU of " + ifname;
  RequireInterface(what, ifname);
  const Json mtu = MtuJson(what, ifname);
  if (context.json) return PrintJson("mtu", mtu);
  const std::string configured =
      mtu["configured"].is_null() ? "" : mtu["configured"].get<std::string>();
  PrintTable({{{"live"}, {std::to_string(mtu["mtu"].get<int>())}}, {{"configured"}, {configured}}});
}

void SetMtu(Context& context, const std::string& ifname, unsigned value) {
  Json wish;
  wish["interfaces"][ifname]["mtu"] = value;
  MakeChange(context, wish);
}

void AddMtu(const Group& app, Context& context) {
  const Group group = AddGroup(app, "mtu", "Reads and sets the MTU of an interface");
  const Verb get = AddVerb(group, context, "get", "Shows the kernel's MTU and the configured one",
                           "  zarnnetctl mtu get eth0");
  const auto shown = AddIfname(get);
  get.Run([&context, shown] { GetMtu(context, *shown); });
  const Verb set =
      AddChange(group, context, "set", "Sets the MTU, now and for the next boot; takes 5 seconds",
                "  zarnnetctl mtu set eth0 9000");
  const auto changed = AddIfname(set);
  auto value = std::make_shared<unsigned>();
  set.AddOption("MTU", *value, "In bytes, 68 to 65535").Required();
  set.Run([&context, changed, value] { SetMtu(context, *changed, *value); });
}

// ---- hostname

Json HostnameJson(const std::string& what) {
  std::array<char, 64> name{};
  ForgetErrors();
  if (ZARNLnxGetHostname(name.data()) >= 0) return {{"hostname", TextOrNull(name.data())}};
  if (!IsRootsLock()) Fail(what);
  return {{"hostname", PartOf(ReadLiveState({"host"}), "/host/name")}};
}

void GetHostname(const Context& context) {
  const Json state = HostnameJson("cannot read the host name");
  if (context.json) return PrintJson("hostname", state);
  PrintTable({{{state["hostname"].is_null() ? "" : state["hostname"].get<std::string>()}}});
}

void AddHostname(const Group& app, Context& context) {
  const Group group = AddGroup(app, "hostname", "Reads and sets the name of the appliance");
  const Verb get =
      AddVerb(group, context, "get", "Shows the host name", "  zarnnetctl hostname get");
  get.Run([&context] { GetHostname(context); });
  const Verb set =
      AddChange(group, context, "set", "Sets the host name", "  zarnnetctl hostname set nas");
  auto name = std::make_shared<std::string>();
  set.AddOption("NAME", *name, "1 to 63 characters").Required();
  set.Run([&context, name] { MakeChange(context, {{"host", {{"name", *name}}}}); });
}

}  // namespace

void AddSystemCommands(const Group& app, Context& context) {
  AddMtu(app, context);
  AddHostname(app, context);
}

}  // namespace tool
