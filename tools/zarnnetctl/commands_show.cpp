// SPDX-License-Identifier: Apache-2.0
// zarnnetctl show: the machine on one screen, or the state document.
#include <array>
#include <fstream>
#include <iostream>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include <zarncore/zarncore.h>

#include "change_call.h"
#include "commands.h"
#include "interfaces.h"
#include "list.h"
#include "name_servers.h"
#include "query.h"
#include "waiting.h"

namespace tool {
namespace {

// ---- the state document

void ShowDocument(Context& context, const std::string& view) {
  const Json options{{"view", view.empty() ? "configured" : view}};
  Report state;
  context.status = ZARNNetChangeRead(options.dump().c_str(), state.Out());
  std::cout << state.Text() << '\n';
}

// ---- interfaces

std::string SysText(const std::string& ifname, const char* file) {
  std::ifstream stream("/sys/class/net/" + ifname + "/" + file);
  std::string text;
  std::getline(stream, text);
  return text;
}

// Drivers of virtual interfaces know no speed, or say -1.
std::string SpeedOf(const Interface& interface) {
  ZARNNETETHINFO info{};
  if (!interface.HasCarrier() || ZARNNetGetEthInfo(interface.name.c_str(), &info) != 0 ||
      info.speed <= 0) {
    return {};
  }
  return std::to_string(info.speed) + " Mb/s";
}

Cell StateCell(const Interface& interface) {
  const State state = StateOf(interface.IsUp(), interface.HasCarrier());
  return {WordOf(state), state == State::kUp ? Tone::kGood : Tone::kBad};
}

std::string MethodOf(const std::string& ifname) {
  std::array<char, 16> method{};
  const std::string file = "/etc/sysconfig/network-scripts/ifcfg-" + ifname;
  const bool known =
      KOPACFileGetKeyValue(file.c_str(), "BOOTPROTO", method.data(), method.size(), 0) > 0;
  return known && std::string(method.data()) != "none" ? method.data() : "";
}

void PrintInterfaces() {
  std::vector<Row> rows{
      Headings({"NAME", "STATE", "SPEED", "MTU", "MASTER", "METHOD", "ADDRESSES"})};
  for (const Interface& interface : ReadInterfaces()) {
    if (interface.IsLoopback()) continue;
    rows.push_back({{interface.name},
                    StateCell(interface),
                    {SpeedOf(interface)},
                    {SysText(interface.name, "mtu")},
                    {MasterOf(interface.name)},
                    {MethodOf(interface.name)},
                    {Join(interface.addresses, " ")}});
  }
  PrintList(rows, "interfaces");
}

void ShowYaml(const std::string& view) {
  const Json options{{"view", view.empty() ? "configured" : view}};
  std::cout << WrittenAsYaml(ReadMachine(options), StateSchema());
}

// ---- the machine

std::string HostName() {
  std::array<char, 256> name{};
  return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string Gateway() {
  std::array<char, 64> gateway{};
  std::array<char, 16> ifname{};
  const int read =
      DefaultGatewayGet(gateway.data(), int{gateway.size()}, ifname.data(), int{ifname.size()});
  if (read < 0 || *ifname.data() == '\0') return {};
  return std::string(gateway.data()) + " over " + ifname.data();
}

bool IsYes(const char* file, const char* key) {
  std::array<char, 16> value{};
  return KOPACFileGetKeyValue(file, key, value.data(), value.size(), 0) > 0 &&
         std::string(value.data()) == "yes";
}

std::string Services() {
  std::vector<std::string> on;
  if (DHCPIsEnabled() == 1) on.emplace_back("DHCP server");
  if (IsYes("/etc/zarninfo.conf", "pppoe_enable")) on.emplace_back("PPPoE");
  if (IsYes("/etc/zarnservice/zarntunnel.conf", "run")) on.emplace_back("IPv6 tunnel");
  return Join(on, ", ");
}

void ShowMachine() {
  PrintTable(
      {{{"host name"}, {HostName()}},
       {{"gateway"}, {Gateway()}},
       {{"name servers"}, {Join(NameServersInUse().value_or(std::vector<std::string>()), " ")}},
       {{"services"}, {Services()}}});
  std::cout << '\n';
  PrintInterfaces();
}

}  // namespace

void AddShowCommands(const Group& app, Context& context) {
  const Verb show =
      AddVerb(app, context, "show", "Shows the machine on one screen, or its state as a document",
              "  zarnnetctl show\n  zarnnetctl show --json\n  zarnnetctl show --yaml >nas.yaml");
  auto view = std::make_shared<std::string>();
  auto yaml = std::make_shared<bool>(false);
  show.AddOption("--view", *view, "The document: configured (with --json alone), live or both")
      .OneOf({"configured", "live", "both"});
  show.AddFlag("--yaml", *yaml, "The document as YAML, with what each field is");
  show.Run([&context, view, yaml] {
    if (*yaml) return ShowYaml(*view);
    if (context.json || !view->empty()) return ShowDocument(context, *view);
    ShowMachine();
  });
}

}  // namespace tool
