// SPDX-License-Identifier: Apache-2.0
// Rules about the DHCP server.
#include <algorithm>
#include <array>
#include <unistd.h>

#include <zarnnetsdk/dhcpd.h>

#include "frame/model/paths.h"
#include "rehearsal/rehearsal.h"
#include "rules/rule.h"

namespace change {
namespace {

const Path kSection("/dhcp_server");
const Path kInterfaces("/dhcp_server/interfaces");

// A subnet of IPv4 that the change stores.
struct Served {
  std::string ifname;
  Path path;
  Json subnet;
};

std::vector<Served> ServedSubnets(const Change& change) {
  std::vector<Served> served;
  for (const std::string& ifname : change.NamedIn(kInterfaces)) {
    for (const char* kind : {"subnets", "tagged"}) {
      const Path path = kInterfaces / ifname / "ipv4" / kind;
      for (const std::string& name : change.NamedIn(path)) {
        if (change.Concerns(path / name))
          served.push_back({ifname, path / name, At(change.wanted, path / name)});
      }
    }
  }
  return served;
}

struct Range {
  std::uint32_t start = 0;
  std::uint32_t end = 0;
  [[nodiscard]] bool Holds(std::uint32_t address) const {
    return address >= start && address <= end;
  }
};

Range RangeOf(const Json& subnet) {
  return {NumberOfIpv4(TextOf(Member(subnet, "start"))),
          NumberOfIpv4(TextOf(Member(subnet, "end")))};
}

void Refuse(const char* rule, const Path& path, const std::string& sentence, Findings* findings) {
  findings->Add(rule, path, Severity::kRefused, sentence);
}

// Does the interface serve a network when all is done?
bool Serves(const Change& change, const std::string& ifname, std::uint32_t network,
            std::uint32_t mask) {
  const Json& ipv4 = At(change.wanted, kInterfaces / ifname / "ipv4");
  if (!IsTrue(Member(ipv4, "enabled"))) return false;
  for (const char* kind : {"subnets", "tagged"}) {
    for (const Json& subnet : Member(ipv4, kind)) {
      const bool on = !subnet.contains("enabled") || IsTrue(subnet["enabled"]);
      if (on && (RangeOf(subnet).start & mask) == network) return true;
    }
  }
  return false;
}

void CheckRange(const Served& served, const Subnet& port, Findings* findings) {
  const Range range = RangeOf(served.subnet);
  const std::string subnet =
      Ipv4Text(port.Network()) + "/" + std::to_string(PrefixOf(Ipv4Text(port.mask)));
  if (!port.Holds(range.start) || !port.Holds(range.end)) {
    Refuse("dhcp_range_outside", served.path / "start",
           "the range is not in the subnet of " + served.ifname + ", " + subnet +
               ": choose it from " + Ipv4Text(port.Network() + 1) + " to " +
               Ipv4Text(port.Broadcast() - 1),
           findings);
  } else if (range.Holds(port.host)) {
    Refuse("dhcp_range_over_own", served.path / "start",
           "the range holds the machine's own address " + port.address +
               ": begin it behind that, or end it before",
           findings);
  } else if (range.Holds(port.Network()) || range.Holds(port.Broadcast())) {
    Refuse("dhcp_range_over_broadcast", served.path / "end",
           "the range holds the network or broadcast address of " + subnet + ": leave those out",
           findings);
  }
  const std::string router = TextOf(Member(served.subnet, "router"));
  if (!router.empty() && !port.Holds(NumberOfIpv4(router))) {
    Refuse("dhcp_router_outside", served.path / "router",
           "clients cannot reach the router " + router + ", which is not in " + subnet, findings);
  } else if (!router.empty() && range.Holds(NumberOfIpv4(router))) {
    Refuse("dhcp_range_over_router", served.path / "router",
           "the range would lease the router's address " + router + ": leave it out", findings);
  }
}

}  // namespace

void RangeFitsItsSubnet(const Change& change, Findings* findings) {
  for (const Served& served : ServedSubnets(change)) {
    for (const char* field : {"start", "end", "prefix"}) {
      if (Member(served.subnet, field).is_null()) {
        findings->Add("dhcp_subnet", served.path / field, Severity::kUsage,
                      "a subnet has a first and a last address and a prefix: name them");
        return;
      }
    }
    const Range range = RangeOf(served.subnet);
    const auto port = SubnetOf(change, served.ifname);
    if (range.end < range.start) {
      Refuse("dhcp_range_upside_down", served.path / "end",
             "the range ends before it begins: exchange the two", findings);
    } else if (port) {
      CheckRange(served, *port, findings);
    } else {
      findings->Add("dhcp_without_address", served.path, Severity::kInsistable,
                    served.ifname +
                        " has no fixed address, without which the server does not "
                        "serve it: give it one in the same change");
    }
  }
}

void RangeIsTheServersAlone(const Change& change, Findings* findings) {
  for (const Served& served : ServedSubnets(change)) {
    std::array<char, 16> other{};
    const std::string start = TextOf(Member(served.subnet, "start"));
    const std::string end = TextOf(Member(served.subnet, "end"));
    const std::string mask = MaskOf(NumberOf(Member(served.subnet, "prefix")));
    if (start.empty() || end.empty()) continue;
    if (DHCPIsRangeConflict(served.ifname.c_str(), start.c_str(), end.c_str(), mask.c_str(),
                            other.data(), other.size()) != 1)
      continue;
    const std::uint32_t bits = NumberOfIpv4(mask);
    if (!Serves(change, other.data(), NumberOfIpv4(start) & bits, bits)) continue;
    findings->Add("dhcp_range_conflict", served.path, Severity::kInsistable,
                  std::string(other.data()) +
                      " serves the same network: use another subnet, or "
                      "switch that one off in the same change");
  }
}

// What the server's own check would refuse, and takes the server down with it.
void ServerTakesTheValues(const Change& change, Findings* findings) {
  for (const Served& served : ServedSubnets(change)) {
    const Json& options = Member(served.subnet, "options");
    const Path path = served.path / "options";
    const long type = NumberOf(Member(options, "netbios-nodetype"), 1);
    if (type != 1 && type != 2 && type != 4 && type != 8)
      Refuse("dhcp_option", path / "netbios-nodetype", "a node type is 1, 2, 4 or 8", findings);
    for (const char* pairs : {"policy-filter", "classless-static-route"}) {
      const Json& list = Member(options, pairs);
      if (list.is_array() && list.size() % 2 != 0)
        Refuse("dhcp_option", path / pairs, "its values come in pairs: one is missing", findings);
    }
    if (!options.is_object()) continue;
    for (const auto& [name, value] : options.items()) {
      if ((value.is_array() && value.empty()) || (value.is_string() && TextOf(value).empty()))
        Refuse("dhcp_option", path / name, "an option has a value: null removes it", findings);
      if (TextOf(value).find('"') != std::string::npos)
        Refuse("dhcp_option", path / name, "a quote would keep the server from starting", findings);
    }
  }
}

Finding DhcpServerRefuses(const std::string& words) {
  return {"dhcp_server_settings", kSection, Severity::kRefused,
          "the DHCP server would not start with these settings: " + words +
              ": give that setting another value, or remove it"};
}

// A plan has asked it already; another user than root is told that he may not change it.
void ServerTakesTheSettings(const Change& change, Findings* findings) {
  const bool starts = change.Concerns(kSection) || change.Restarts(kSection);
  if (!starts || !IsTrue(At(change.wanted, kSection / "enabled"))) return;
  if (change.options.rehearsing || !change.options.plan.is_null() || ::geteuid() != 0) return;
  const ServersAnswer answer = ::access(frame::paths::kDhcpServer, X_OK) == 0
                                   ? AskDhcpServer(change)
                                   : ServersAnswer{{}, "its program is not on this machine"};
  if (!answer.refusal.empty()) {
    findings->Add(DhcpServerRefuses(answer.refusal));
  } else if (!answer.whyNotAsked.empty()) {
    findings->Add(
        "dhcp_server_not_asked", kSection, Severity::kWarning,
        "the DHCP server was not asked whether it takes the settings: " + answer.whyNotAsked);
  }
}

void OnlyWhatIsOnRestarts(const Change& change, Findings* findings) {
  const struct {
    Path section;
    Path enabled;
  } services[] = {{kSection, kSection / "enabled"},
                  {Path("/pppoe"), Path("/pppoe/enabled")},
                  {Path("/tunnel"), Path("/tunnel/enabled")}};
  for (const auto& [section, enabled] : services) {
    if (!change.Restarts(section) || IsTrue(At(change.wanted, enabled))) continue;
    findings->Add("restart_of_what_is_off", section, Severity::kRefused,
                  "it is switched off: \"enabled\": true switches it on");
  }
  for (const Path& path : change.options.restart) {
    const bool interface = Leads(Path("/interfaces"), path) && change.kernel.Link(path.back());
    const bool service = std::any_of(std::begin(services), std::end(services),
                                     [&](const auto& row) { return row.section == path; });
    if (interface || service || path == Path("/pppoe_relay")) continue;
    findings->Add(
        "restart", path, Severity::kNotFound,
        "nothing of this name can be started anew: name /interfaces/IFNAME, /dhcp_server, "
        "/pppoe, /pppoe_relay or /tunnel");
  }
}

}  // namespace change
