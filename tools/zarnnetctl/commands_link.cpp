// SPDX-License-Identifier: Apache-2.0
// zarnnetctl link and mac: interfaces brought up and taken down; the address of the port behind
// one.
#include <array>

#include "commands.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

// ---- link up, link down, link restart

void Switch(Context& context, const std::vector<std::string>& ifnames, bool up) {
  Json wish;
  for (const std::string& ifname : ifnames)
    wish["interfaces"][ifname]["up"] = up;
  MakeChange(context, wish);
}

void Restart(Context& context, const std::vector<std::string>& ifnames) {
  std::vector<std::string> paths;
  for (const std::string& ifname : ifnames) {
    RequireInterface("cannot restart " + ifname, ifname);
    paths.push_back("/interfaces/" + ifname);
  }
  MakeChange(context, {}, paths);
}

std::shared_ptr<std::vector<std::string>> AddNames(const Verb& verb) {
  auto ifnames = std::make_shared<std::vector<std::string>>();
  verb.AddOption("IFNAME", *ifnames, "Names of the interfaces").Required().Interface();
  return ifnames;
}

void AddSwitch(const Group& group, Context& context, bool up) {
  const std::string name = up ? "up" : "down";
  const Verb verb =
      AddChange(group, context, name, up ? "Brings interfaces up" : "Takes interfaces down",
                "  zarnnetctl link " + name + " eth0\n  zarnnetctl link " + name + " eth2 eth3");
  verb.Run([&context, ifnames = AddNames(verb), up] { Switch(context, *ifnames, up); });
}

void AddRestart(const Group& group, Context& context) {
  const Verb verb =
      AddChange(group, context, "restart", "Starts interfaces anew, as their files say",
                "  zarnnetctl link restart eth0");
  verb.Run([&context, ifnames = AddNames(verb)] { Restart(context, *ifnames); });
}

// ---- mac

std::string MacProblem(int result) {
  switch (result) {
    case 2:
      return "the address of the port cannot be read";
    case 3:
      return "the shared address of the high-availability pair cannot be had";
    case 4:
      return "an appliance with two controller heads has no address to show; use --local";
    default:
      return "there is no Ethernet port behind the interface, or its address cannot be read";
  }
}

void ShowMac(const Context& context, const std::string& ifname, bool local) {
  const std::string what = "cannot tell the MAC address of " + ifname;
  RequireInterface(what, ifname);
  std::array<char, 18> mac{};
  const int result =
      KOPANetGetMacAddrByInterface(ifname.c_str(), mac.data(), int{mac.size()}, local ? 1 : 0);
  if (result != 0) throw Failure(what, std::nullopt, MacProblem(result));
  if (!context.json) return PrintTable({{{mac.data()}}});
  PrintJson("mac", {{"name", ifname}, {"mac", mac.data()}, {"local", local}});
}

void AddMac(const Group& app, Context& context) {
  const Verb verb =
      AddVerb(app, context, "mac", "Shows the MAC address of the port behind an interface",
              "  zarnnetctl mac eth0\n  zarnnetctl mac bond0 --local");
  const auto ifname = AddIfname(verb);
  auto local = std::make_shared<bool>(false);
  verb.AddFlag("--local", *local,
               "The port's own address, not the one a high-availability pair shares");
  verb.Run([&context, ifname, local] { ShowMac(context, *ifname, *local); });
}

}  // namespace

void AddLinkCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "link", "Brings interfaces up and takes them down");
  AddSwitch(group, context, true);
  AddSwitch(group, context, false);
  AddRestart(group, context);
  AddMac(app, context);
}

}  // namespace tool
