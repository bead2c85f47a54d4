// SPDX-License-Identifier: Apache-2.0
// The built-in DHCP server: its switches, subnets, vendor classes and network boot. A change of it
// ends with one restart of the server.
#include <algorithm>
#include <array>
#include <utility>

#include "document/dhcp_subnet.h"
#include "document/section.h"
#include "frame/model/dhcp_files.h"
#include "frame/model/paths.h"

namespace change {
namespace {

namespace files = frame::dhcp_files;

const Path kSection("/dhcp_server");
const Path kInterfaces("/dhcp_server/interfaces");
constexpr char kServer[] = "dnsmasq";

const char* WordOf(Family family) {
  return family == Family::kV4 ? "ipv4" : "ipv6";
}
int TypeOf(Family family) {
  return static_cast<int>(family);
}

// ---- the shape

Shape FamilyShape(Family family) {
  std::vector<Field> fields{{"enabled", Flag("Is the interface served")},
                            {"subnets", Map(Format::kNumber, "Subnets by number, from 0",
                                            SubnetShape(family, family == Family::kV4))}};
  if (family == Family::kV4)
    fields.push_back({"tagged", Map(Format::kAny, "Subnets by tag", SubnetShape(family, false))});
  return Object(family == Family::kV4 ? "IPv4" : "IPv6", std::move(fields));
}

Shape BootShape() {
  return Object("Network boot",
                {{"enabled", Flag("Are clients told what to boot")},
                 {"remote", Flag("From the remote TFTP server, not the machine's own")},
                 {"local_loader", Text("Boot file on the machine", Format::kAny, 4095)},
                 {"remote_loader", Text("Boot file on the remote server", Format::kAny, 4095)},
                 {"server", Text("The remote TFTP server", Format::kIpv4, 19)}});
}

Shape ShapeOf() {
  const Shape vendor =
      Map(Format::kNumber, "Values by the option's number, 1 to 254", Text("Value"));
  return Object(
      "The built-in DHCP server",
      {{"enabled", Flag("Is it switched on as a whole")},
       {"interfaces", Map(Format::kIfname, "Interfaces that it serves",
                          Object("One interface", {{"ipv4", FamilyShape(Family::kV4)},
                                                   {"ipv6", FamilyShape(Family::kV6)}}))},
       {"vendors", Map(Format::kAny, "Options for clients of a vendor class, by its name", vendor)},
       {"network_boot", BootShape()},
       {"running", Flag("Does a server run").ReadOnly()}});
}

// ---- reading

Json NumberedSubnets(const std::string& ifname, Family family) {
  Json subnets = Json::object();
  for (unsigned number = 0;; ++number) {
    DHCP_SUBNET_CONF record{};
    const int result = DHCPTagConfGet(ifname.c_str(), number, TypeOf(family), &record);
    if (result != 1) return subnets.empty() ? Json() : subnets;
    subnets[std::to_string(number)] = SubnetOf(record, family, family == Family::kV4);
    DHCPOptionFree(record.options);
  }
}

Json TaggedSubnets(const std::string& ifname, std::string* unread) {
  constexpr std::string_view kEnd = ".conf";
  Json subnets = Json::object();
  for (const std::string& name : NamesIn(files::kFolder, "dhcpd-" + ifname + "-", unread)) {
    if (!name.ends_with(kEnd) || name.starts_with("subnet")) continue;
    const std::string tag = name.substr(0, name.size() - kEnd.size());
    DHCP_SUBNET_CONF record{};
    if (tag != "static" && ZARNNetGetDhcpServerConf(tag.c_str(), ifname.c_str(), &record) == 1)
      subnets[tag] = SubnetOf(record, Family::kV4, false);
    DHCPOptionFree(record.options);
  }
  return subnets.empty() ? Json() : subnets;
}

// The library lists the names without a dot; a VLAN's has one. Files with a "-" are those of
// subnets.
std::vector<std::string> SwitchedInterfaces(Family family, std::string* unread) {
  constexpr std::string_view kEnd = ".info";
  Names listed;
  if (DHCPInterfaceListGet(listed.Out(), TypeOf(family)) < 0 && unread != nullptr)
    *unread = files::kFolder;
  auto ifnames = listed.Texts();
  std::erase(ifnames, "pxe");  // network boot's switch
  const char* const begin = family == Family::kV4 ? "dhcpd-" : "dhcpd6-";
  for (std::string name : NamesIn(files::kFolder, begin, unread)) {
    if (!name.ends_with(kEnd)) continue;
    name.resize(name.size() - kEnd.size());
    const auto dot = name.find('.');
    const bool vlan = dot != std::string::npos && dot != 0 && !name.ends_with('.') &&
                      name.find('-') == std::string::npos && Fits(name, Format::kIfname);
    if (vlan) ifnames.push_back(std::move(name));
  }
  return ifnames;
}

Json InterfacesOf(Family family, Json interfaces, std::string* unread) {
  for (const std::string& ifname : SwitchedInterfaces(family, unread)) {
    Json json{{"enabled", DHCPInterfaceIsEnabled(ifname.c_str(), TypeOf(family)) == 1}};
    Put(&json, "subnets", NumberedSubnets(ifname, family));
    if (family == Family::kV4) Put(&json, "tagged", TaggedSubnets(ifname, unread));
    interfaces[ifname][WordOf(family)] = json;
  }
  return interfaces;
}

Json VendorOf(const std::string& vendor) {
  Hash hash;
  Names numbers;
  Json options = Json::object();
  if (DHCPVendorGetVendor(vendor.c_str(), hash.Out()) < 0 ||
      KOPACSzHashEnumKey(hash.Get(), numbers.Out()) < 0)
    return options;
  for (const std::string& number : numbers.Texts())
    options[number] = KOPACSzHashGetValue(hash.Get(), number.c_str());
  return options;
}

Json Vendors() {
  Names names;
  Json vendors = Json::object();
  if (DHCPVendorEnum(names.Out()) < 0) return nullptr;
  for (const std::string& name : names.Texts())
    vendors[name] = VendorOf(name);
  return vendors.empty() ? Json() : vendors;
}

Json Boot() {
  DHCP_PXE_CONF conf{};
  if (!IsFile(files::kPxeInfo) || DHCPPXEConfGet(&conf) < 0) return nullptr;
  Json boot{{"enabled", conf.enable == 1}, {"remote", conf.is_remote_tftp == 1}};
  Put(&boot, "local_loader", conf.local_bootloader);
  Put(&boot, "remote_loader", conf.remote_bootloader);
  Put(&boot, "server", conf.remote_tftp_server_ip);
  return boot;
}

Json Configured(const View& view) {
  Json server{{"enabled", DHCPIsEnabled() == 1}};
  const Json interfaces = InterfacesOf(
      Family::kV6, InterfacesOf(Family::kV4, Json::object(), view.unread), view.unread);
  if (!interfaces.empty()) server["interfaces"] = interfaces;
  Put(&server, "vendors", Vendors());
  Put(&server, "network_boot", Boot());
  return server;
}

Json Live(const View&, const Json&) {
  std::array<char, 256> room{};
  return {{"running", KOPACPs(kServer, room.data(), room.size()) > 0}};
}

// ---- what follows from a wish

constexpr char kSwitchOff[] = "this cannot be removed: \"enabled\": false switches it off";

void SettleSubnets(const Path& path, bool numbered, Change* change, Findings* findings) {
  for (const std::string& name : change->NamedIn(path)) {
    if (At(change->wish, path / name).is_null())
      findings->Add("dhcp_server", path / name, Severity::kUsage, kSwitchOff);
    Json& wanted = change->wanted[path / name];
    if (wanted.is_object() && !wanted.contains("enabled")) wanted["enabled"] = true;
    if (wanted.is_object() && !wanted.contains("lease")) wanted["lease"] = 3600;
    // The server reads them in turn, up to the first number that is missing.
    const long number = numbered ? std::stol(name) : 0;
    if (number > 0 && At(change->wanted, path / std::to_string(number - 1)).is_null()) {
      findings->Add("dhcp_server", path / name, Severity::kUsage,
                    "subnets are numbered without gaps: name it " +
                        std::to_string(At(change->before, path).size()));
    }
  }
}

void RequireModes(const Path& path, const Change& change, Findings* findings) {
  for (const std::string& name : change.NamedIn(path)) {
    const Json& wanted = At(change.wanted, path / name);
    if (wanted.is_object() && !wanted.contains("mode"))
      findings->Add("dhcp_server", path / name / "mode", Severity::kUsage,
                    "name what clients are told: off, ra-only, ra-stateless or stateful");
  }
}

void SettleInterface(const Path& path, Change* change, Findings* findings) {
  for (const Family family : {Family::kV4, Family::kV6}) {
    const Path below = path / WordOf(family);
    if (!change->wish.contains(below)) continue;
    if (At(change->wish, below).is_null()) {
      findings->Add("dhcp_server", below, Severity::kUsage, kSwitchOff);
      continue;
    }
    // A subnet of an interface without a switch is never found again.
    if (!At(change->wanted, below).contains("enabled"))
      change->wish[below / "enabled"] = change->wanted[below / "enabled"] = true;
    SettleSubnets(below / "subnets", true, change, findings);
    if (family == Family::kV6) RequireModes(below / "subnets", *change, findings);
    SettleSubnets(below / "tagged", false, change, findings);
  }
}

void Settle(Change* change, Findings* findings) {
  if (At(change->wish, kSection).is_null())
    return findings->Add("dhcp_server", kSection, Severity::kUsage, kSwitchOff);
  for (const std::string& ifname : change->NamedIn(kInterfaces)) {
    if (At(change->wish, kInterfaces / ifname).is_null()) {
      findings->Add("dhcp_server", kInterfaces / ifname, Severity::kUsage, kSwitchOff);
    } else {
      SettleInterface(kInterfaces / ifname, change, findings);
    }
  }
}

// ---- steps

void PlanNumbered(const Change& change, const std::string& ifname, Family family, Steps* steps) {
  const Path path = kInterfaces / ifname / WordOf(family) / "subnets";
  for (const std::string& name : change.NamedIn(path)) {
    if (!change.Concerns(path / name)) continue;
    const Json subnet = At(change.wanted, path / name);
    const auto number = static_cast<unsigned>(std::stoul(name));
    steps->push_back({Phase::kSettings,
                      path / name,
                      "store subnet " + name + " of " + ifname + " (" + WordOf(family) + ")",
                      "DHCPTagConfSet",
                      {files::SubnetConf(files::StemOf(TypeOf(family)), ifname, number)},
                      [=] {
                        const SubnetRecord record(ifname, subnet, family);
                        return DHCPTagConfSet(ifname.c_str(), number, TypeOf(family),
                                              &record.record) == 0;
                      }});
  }
}

void PlanTagged(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = kInterfaces / ifname / "ipv4" / "tagged";
  for (const std::string& tag : change.NamedIn(path)) {
    if (!change.Concerns(path / tag)) continue;
    const Json subnet = At(change.wanted, path / tag);
    steps->push_back({Phase::kSettings,
                      path / tag,
                      "store subnet " + tag + " of " + ifname,
                      "ZARNNetSetDhcpServerConfigFiles",
                      {files::TagConf(ifname, tag)},
                      [=] {
                        SubnetRecord record(ifname, subnet, Family::kV4);
                        Fill(tag, record.record.tag);
                        return ZARNNetSetDhcpServerConfigFiles(&record.record,
                                                               record.record.enable) == 1;
                      }});
  }
}

void PlanSwitch(const Change& change, const std::string& ifname, Family family, Steps* steps) {
  const Path path = kInterfaces / ifname / WordOf(family) / "enabled";
  if (!change.Concerns(path)) return;
  const int on = IsTrue(At(change.wanted, path)) ? 1 : 0;
  steps->push_back(
      {Phase::kSettings,
       path,
       (on != 0 ? "serve " : "stop serving ") + ifname + " (" + WordOf(family) + ")",
       "DHCPInterfaceSetEnabled",
       {files::InterfaceInfo(files::StemOf(TypeOf(family)), ifname)},
       [=] { return DHCPInterfaceSetEnabled(ifname.c_str(), TypeOf(family), on) == 0; }});
}

bool SetVendor(const std::string& vendor, const Json& options) {
  Hash hash;
  if (options.is_object()) {
    for (const auto& [number, value] : options.items())
      hash.Set(number, TextOf(value));
  }
  return DHCPVendorSetVendor(vendor.c_str(), hash.Get()) == 0;
}

bool SetBoot(const Json& boot) {
  DHCP_PXE_CONF conf{};
  conf.enable = IsTrue(Member(boot, "enabled")) ? 1 : 0;
  conf.is_remote_tftp = IsTrue(Member(boot, "remote")) ? 1 : 0;
  Fill(TextOf(Member(boot, "local_loader")), conf.local_bootloader);
  Fill(TextOf(Member(boot, "remote_loader")), conf.remote_bootloader);
  Fill(TextOf(Member(boot, "server")), conf.remote_tftp_server_ip);
  return DHCPPXEConfSet(&conf) == 0;
}

void PlanRest(const Change& change, Steps* steps) {
  for (const std::string& vendor : change.NamedIn(kSection / "vendors")) {
    const Path path = kSection / "vendors" / vendor;
    const Json options = At(change.wanted, path);
    if (!change.Concerns(path)) continue;
    steps->push_back({Phase::kSettings,
                      path,
                      "store the options of the vendor class " + vendor,
                      "DHCPVendorSetVendor",
                      {files::kVendorConf},
                      [=] { return SetVendor(vendor, options); }});
  }
  const Json boot = At(change.wanted, kSection / "network_boot");
  if (!change.Concerns(kSection / "network_boot")) return;
  steps->push_back({Phase::kSettings,
                    kSection / "network_boot",
                    "store network boot",
                    "DHCPPXEConfSet",
                    {files::kPxeConf},
                    [=] { return SetBoot(boot); }});
}

// What is stored has no effect before the server is started anew with it.
void PlanServer(const Change& change, Steps* steps) {
  const Path enabled = kSection / "enabled";
  if (change.Concerns(enabled)) {
    const std::string value = IsTrue(At(change.wanted, enabled)) ? files::kYes : files::kNo;
    steps->push_back({Phase::kSettings,
                      enabled,
                      "switch the DHCP server " + std::string(value == files::kYes ? "on" : "off"),
                      "KOPACFileSetKeyValue",
                      {files::kServerInfo},
                      [=] {
                        return KOPACFileSetKeyValue(files::kServerInfo, files::kEnable,
                                                    value.c_str(), "%s=\"%s\"\n") == 0;
                      }});
  }
  if (!change.Concerns(kSection) && !change.Restarts(kSection)) return;
  if (!IsTrue(At(change.wanted, enabled)) && !IsTrue(At(change.before, enabled))) return;
  steps->push_back({Phase::kServices,
                    kSection,
                    "put the DHCP server's settings into effect",
                    "KOPANetDHCPServerRestart",
                    {frame::paths::kNetworkScript},
                    [] { return KOPANetDHCPServerRestart() == 0; }});
}

void Plan(const Change& change, Steps* steps) {
  for (const std::string& ifname : change.NamedIn(kInterfaces)) {
    for (const Family family : {Family::kV4, Family::kV6}) {
      PlanNumbered(change, ifname, family, steps);
      PlanSwitch(change, ifname, family, steps);
    }
    PlanTagged(change, ifname, steps);
  }
  PlanRest(change, steps);
  PlanServer(change, steps);
}

bool Revive(const Change& change) {
  const bool ran = IsTrue(At(change.live, kSection / "running"));
  return (!ran && !IsTrue(At(Live({change.kernel, false, {}}, nullptr), Path("/running")))) ||
         KOPANetDHCPServerRestart() == 0;
}

}  // namespace

const Section kDhcpServer{"dhcp_server", ShapeOf, Configured,   Live,
                          Settle,        Plan,    AwaitNothing, Revive};

}  // namespace change
