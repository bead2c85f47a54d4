// SPDX-License-Identifier: Apache-2.0
// A report's sections of what the machine is: its interfaces, names, servers and services.
#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "interfaces.h"
#include "picture.h"
#include "query.h"
#include "report.h"
#include "wish.h"

namespace tool {
namespace {

// A value in words, empty where there is none.
std::string Words(const Json& state, const std::string& path) {
  const Json value = PartOf(state, path);
  if (value.is_null()) return {};
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_array()) return Join(TextsOf(value), ", ");
  return value.is_string() ? value.get<std::string>() : WrittenOut(value);
}

Cell Both(const Json& state, const char* view, const std::string& path) {
  return {Words(state, std::string("/") + view + path)};
}

Row FilesAndKernel(const Json& state, const std::string& name, const std::string& path) {
  return {{name}, Both(state, "configured", path), Both(state, "live", path)};
}

// ---- interfaces

State ShownState(const Json& interface) {
  return tool::StateOf(Words(interface, "/up") == "yes",
                       Words(interface, "/link/carrier") == "yes");
}

std::string Ipv4Of(const Json& configured) {
  const std::string address = Words(configured, "/ipv4/address");
  const std::string method = Words(configured, "/ipv4/method");
  return address.empty() ? method
                         : method + " " + address + "/" + Words(configured, "/ipv4/prefix");
}

std::string SpeedOf(const Json& interface) {
  const std::string speed = Words(interface, "/link/speed");
  return ShownState(interface) != State::kUp || speed.empty() ? "" : speed + "\xC2\xA0Mb/s";
}

Row InterfaceRow(const std::string& name, const Json& live, const Json& configured) {
  const State state = ShownState(live);
  return {{name},
          {Words(live, "/link/kind")},
          {WordOf(state), state == State::kUp ? Tone::kGood : Tone::kBad},
          {SpeedOf(live)},
          {Words(live, "/mtu")},
          {Words(live, "/link/master")},
          {Ipv4Of(configured)},
          {Words(configured, "/ipv6/method")},
          {Words(live, "/link/addresses")},
          {Words(live, "/link/mac")}};
}

std::string CountedStates(const Json& interfaces) {
  std::string text;
  for (const State state : {State::kUp, State::kNoLink, State::kDown}) {
    const auto count = std::count_if(interfaces.begin(), interfaces.end(),
                                     [&](const Json& one) { return ShownState(one) == state; });
    if (count == 0) continue;
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + WordOf(state);
  }
  return text;
}

// ---- the DHCP server

std::string RangeOf(const Json& subnet) {
  const std::string start = Words(subnet, "/start");
  return start.empty() ? "" : start + " to " + Words(subnet, "/end");
}

std::string OptionsOf(const Json& subnet) {
  std::vector<std::string> options;
  const Json named = PartOf(subnet, "/options");
  for (const auto& [name, value] : named.items())
    options.push_back(name + "=" + WrittenOut(value));
  return Join(options, ", ");
}

void AddSubnets(const std::string& ifname, const std::string& kind, const Json& subnets,
                std::vector<Row>* rows) {
  for (const auto& [number, subnet] : subnets.items()) {
    rows->push_back({{ifname},
                     {kind + " " + number},
                     {Words(subnet, "/enabled")},
                     {RangeOf(subnet)},
                     {Words(subnet, "/router")},
                     {Words(subnet, "/dns")},
                     {Words(subnet, "/domain")},
                     {Words(subnet, "/lease")},
                     {OptionsOf(subnet)}});
  }
}

// ---- services

Row ServiceRow(const Json& state, const std::string& name, const std::string& section,
               const char* running, const std::string& detail) {
  const Cell runs = Both(state, "live", section + running);
  return {{name},
          Both(state, "configured", section + "/enabled"),
          {runs.text, runs.text == "yes" ? Tone::kGood : Tone::kPlain},
          {detail}};
}

std::string Labelled(const char* label, const std::string& text) {
  return text.empty() ? "" : label + text;
}

}  // namespace

void TellAtAGlance(const Json& state, Page* page) {
  const Json interfaces = PartOf(state, "/live/interfaces");
  const std::string gateway = Words(state, "/live/routes/gateway");
  const std::string over = Words(state, "/live/routes/interface");
  page->Facts({{{"host name"}, {Words(state, "/live/host/name")}},
               {{"interfaces"}, {CountedStates(interfaces)}},
               {{"gateway"}, {gateway + Labelled(" over ", over)}},
               {{"name servers"}, {Words(state, "/live/dns/servers")}}});
}

void TellTopology(Page* page) {
  const std::vector<Node> tree = ReadTree();
  if (tree.empty()) return page->Say("no interfaces");
  page->Pictures(SvgOf(tree));
  page->Say(
      "What stands on others is to the right of them. Solid line: up; dashed: no link; dotted: "
      "down or missing.");
}

void TellInterfaces(const Json& state, Page* page) {
  std::vector<Row> rows{
      Headings({"Name", "Kind", "State", "Speed", "MTU", "Part of", "IPv4 (files)", "IPv6 (files)",
                "Addresses (kernel)", "Hardware address"})};
  const Json live = PartOf(state, "/live/interfaces");
  const Json configured = PartOf(state, "/configured/interfaces");
  for (const auto& [name, interface] : live.items())
    rows.push_back(InterfaceRow(name, interface, configured.value(name, Json())));
  for (const auto& [name, interface] : configured.items()) {
    if (!live.contains(name))
      rows.push_back({{name}, {}, {"missing", Tone::kBad}, {}, {}, {}, {Ipv4Of(interface)}});
  }
  for (Row& row : rows)
    row.resize(rows.front().size());
  std::sort(rows.begin() + 1, rows.end(), [](const Row& a, const Row& b) {
    return ::strverscmp(a.front().text.c_str(), b.front().text.c_str()) < 0;
  });
  page->Table(rows);
}

void TellNames(const Json& state, Page* page) {
  page->Table({Headings({"Setting", "Files", "Kernel and resolver"}),
               FilesAndKernel(state, "host name", "/host/name"),
               FilesAndKernel(state, "name servers", "/dns/servers"),
               FilesAndKernel(state, "servers are", "/dns/mode"),
               FilesAndKernel(state, "gateway", "/routes/gateway"),
               FilesAndKernel(state, "gateway over", "/routes/interface"),
               FilesAndKernel(state, "topology", "/topology/name")});
}

void TellDhcpServer(const Json& state, Page* page) {
  std::vector<Row> rows{Headings({"Interface", "Subnet", "Served", "Range", "Router",
                                  "Name servers", "Domain", "Lease (s)", "Options"})};
  const Json server = PartOf(state, "/configured/dhcp_server");
  const Json interfaces = PartOf(server, "/interfaces");
  for (const auto& [ifname, interface] : interfaces.items()) {
    AddSubnets(ifname, "IPv4", PartOf(interface, "/ipv4/subnets"), &rows);
    AddSubnets(ifname, "IPv4, tag", PartOf(interface, "/ipv4/tagged"), &rows);
    AddSubnets(ifname, "IPv6", PartOf(interface, "/ipv6/subnets"), &rows);
  }
  const std::string runs = Words(state, "/live/dhcp_server/running");
  page->Say("Switched on: " + Words(server, "/enabled") + "; runs: " + runs + ".");
  if (rows.size() == 1) return page->Say("No subnets are stored.");
  page->Table(rows);
}

void TellServices(const Json& state, Page* page) {
  const auto live = [&](const char* path) { return Words(state, std::string("/live") + path); };
  const auto files = [&](const char* path) {
    return Words(state, std::string("/configured") + path);
  };
  std::vector<Row> rows{Headings({"Service", "Wanted (files)", "Runs", "Details"}),
                        ServiceRow(state, "DHCP server", "/dhcp_server", "/running", "")};
  rows.push_back(ServiceRow(
      state, "PPPoE", "/pppoe", "/enabled",
      Labelled("on ", files("/pppoe/interface")) + Labelled(", address ", live("/pppoe/address"))));
  rows.push_back(ServiceRow(
      state, "IPv6 tunnel", "/tunnel", "/enabled",
      Labelled("to ", files("/tunnel/server")) + Labelled(", address ", live("/tunnel/address"))));
  const Json relays = PartOf(state, "/configured/pppoe_relay");
  for (const auto& [ifname, relay] : relays.items()) {
    rows.push_back(ServiceRow(state, "PPPoE relay on " + ifname, "/pppoe_relay/" + ifname,
                              "/enabled", Labelled("to ", Words(relay, "/server"))));
  }
  page->Table(rows);
}

}  // namespace tool
