// SPDX-License-Identifier: Apache-2.0
// zarnnetctl mtu and hostname: the MTU of an interface, the name of the appliance.
#include <array>

#include "commands.h"
#include "query.h"

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

// The setter takes its own locks, and waits for the link.
void SetMtu(const Context& context, const std::string& ifname, unsigned value) {
  const std::string what = "cannot set the MTU of " + ifname;
  RequireRoot(what);
  RequireInterface(what, ifname);
  ForgetErrors();
  if (ZARNNetSetMTUValue(std::to_string(value).c_str(), ifname.c_str()) < 0) Fail(what);
  if (context.json) PrintJson("mtu", MtuJson(what, ifname));
}

void AddMtu(const Group& app, Context& context) {
  const Group group = AddGroup(app, "mtu", "Reads and sets the MTU of an interface");
  const Verb get = AddVerb(group, context, "get", "Shows the kernel's MTU and the configured one",
                           "  zarnnetctl mtu get eth0");
  const auto shown = AddIfname(get);
  get.Run([&context, shown] { GetMtu(context, *shown); });
  const Verb set =
      AddVerb(group, context, "set", "Sets the MTU, now and for the next boot; takes 5 seconds",
              "  zarnnetctl mtu set eth0 9000");
  const auto changed = AddIfname(set);
  auto value = std::make_shared<unsigned>();
  set.AddOption("MTU", *value, "In bytes, 68 to 65535").Required().Within(68, 65535);
  set.Run([&context, changed, value] { SetMtu(context, *changed, *value); });
}

// ---- hostname

Json HostnameJson(const std::string& what) {
  std::array<char, 64> name{};
  ForgetErrors();
  if (ZARNLnxGetHostname(name.data()) < 0) Fail(what);
  return {{"hostname", TextOrNull(name.data())}};
}

void GetHostname(const Context& context) {
  const Json state = HostnameJson("cannot read the host name");
  if (context.json) return PrintJson("hostname", state);
  PrintTable({{{state["hostname"].is_null() ? "" : state["hostname"].get<std::string>()}}});
}

void SetHostname(const Context& context, const std::string& name) {
  const std::string what = "cannot set the host name";
  RequireRoot(what);
  ForgetErrors();
  if (ZARNLnxSetHostname(name.c_str()) < 0) Fail(what);
  if (context.json) PrintJson("hostname", HostnameJson(what));
}

void AddHostname(const Group& app, Context& context) {
  const Group group = AddGroup(app, "hostname", "Reads and sets the name of the appliance");
  const Verb get =
      AddVerb(group, context, "get", "Shows the host name", "  zarnnetctl hostname get");
  get.Run([&context] { GetHostname(context); });
  const Verb set =
      AddVerb(group, context, "set", "Sets the host name", "  zarnnetctl hostname set nas");
  auto name = std::make_shared<std::string>();
  set.AddOption("NAME", *name, "1 to 63 characters").Required();
  set.Run([&context, name] { SetHostname(context, *name); });
}

}  // namespace

void AddSystemCommands(const Group& app, Context& context) {
  AddMtu(app, context);
  AddHostname(app, context);
}

}  // namespace tool
