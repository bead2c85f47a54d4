// SPDX-License-Identifier: Apache-2.0
// zarnnetctl dhcpd subnet: the subnets that the built-in DHCP server serves, by options or as JSON.
#include <algorithm>
#include <memory>

#include "commands.h"
#include "list.h"
#include "put.h"
#include "query.h"

namespace tool {
namespace {

constexpr int kIpv4 = 0;
constexpr int kIpv6 = 1;
constexpr int kDefaultLease = 3600;

// Which subnet a verb is about.
struct Target {
  std::string ifname;
  unsigned number = 0;
  bool v6 = false;

  [[nodiscard]] int Type() const { return v6 ? kIpv6 : kIpv4; }
  [[nodiscard]] std::string What(const std::string& verb) const {
    return "cannot " + verb + (v6 ? " IPv6" : " IPv4") + " subnet " + std::to_string(number) +
           " of " + ifname;
  }
};

// A record with its options, which it owns.
struct Subnet {
  DHCP_SUBNET_CONF record{};
  std::vector<std::unique_ptr<NameList>> lists;
  std::vector<std::unique_ptr<DHCP_OPTION>> options;
};

int OptionNumber(const std::string& what, const std::string& name) {
  for (const ZARNNET_DHCP_OPTION& option : ZARNNetDhcpOptions) {
    if (name == option.name) return option.number;
  }
  throw Failure(what, ZARNNETERR_BAD_PARAMETER, "there is no option '" + name + "'");
}

void AddOption(const std::string& what, const std::string& name,
               const std::vector<std::string>& values, Subnet* subnet) {
  const int number = OptionNumber(what, name);
  auto option = std::make_unique<DHCP_OPTION>();
  option->number = number;
  Put(what, "name of an option", name, option->name);
  if (DHCPOptionIsListValue(number) == 1) {
    auto list = std::make_unique<NameList>();
    for (const std::string& value : values)
      list->Add(value);
    option->values = list->Get();
    subnet->lists.push_back(std::move(list));
  } else {
    Put(what, "value of " + name, Join(values, ","), option->value);
  }
  if (!subnet->options.empty()) subnet->options.back()->next = option.get();
  subnet->options.push_back(std::move(option));
  subnet->record.options = subnet->options.front().get();
}

void SetServers(const std::string& what, const std::vector<std::string>& servers,
                DHCP_SUBNET_CONF* record) {
  const auto at = [&servers](std::size_t i) { return i < servers.size() ? servers[i] : ""; };
  Put(what, "name server", at(0), record->dns1);
  Put(what, "name server", at(1), record->dns2);
  const auto rest = servers.size() > 2
                        ? std::vector<std::string>(servers.begin() + 2, servers.end())
                        : std::vector<std::string>();
  Put(what, "further name servers", Join(rest, ","), record->dns_more);
}

// ---- reading

std::optional<DHCP_SUBNET_CONF> Read(const Target& target) {
  const std::string what = target.What("read");
  DHCP_SUBNET_CONF record{};
  ForgetErrors();
  const int result = DHCPTagConfGet(target.ifname.c_str(), target.number, target.Type(), &record);
  if (result < 0) {
    throw Failure(what, std::nullopt, "its file is damaged, or names no name server");
  }
  return result == 1 ? std::optional(record) : std::nullopt;
}

DHCP_SUBNET_CONF Require(const Target& target) {
  const auto record = Read(target);
  if (!record) throw Failure(target.What("show"), ZARNNETERR_NOT_FOUND, "there is no such subnet");
  return *record;
}

Json OptionJson(const DHCP_OPTION& option) {
  Json values = Json::array();
  for (int i = 0; option.values != nullptr && i < option.values->nItem; ++i)
    values.push_back(KOPACSzListGet(option.values, i));
  if (option.values == nullptr) values.push_back(option.value);
  return {{"number", option.number}, {"name", option.name}, {"values", values}};
}

Json ServersJson(const DHCP_SUBNET_CONF& record) {
  Json servers = Json::array();
  for (const char* server : {record.dns1, record.dns2}) {
    if (*server != '\0') servers.push_back(server);
  }
  return servers;
}

Json ToJson(const Target& target, const DHCP_SUBNET_CONF& record) {
  Json options = Json::array();
  for (const DHCP_OPTION* option = record.options; option != nullptr; option = option->next)
    options.push_back(OptionJson(*option));
  Json json{{"interface", target.ifname},
            {"number", target.number},
            {"family", target.v6 ? 6 : 4},
            {"enable", record.enable == 1},
            {"start", TextOrNull(record.start)},
            {"end", TextOrNull(record.end)},
            {"lease", record.lease},
            {"dns", ServersJson(record)}};
  if (target.v6) {
    json["mode"] = TextOrNull(record.v6mode);
    return json;
  }
  json["netmask"] = TextOrNull(record.netmask);
  json["router"] = TextOrNull(record.router);
  json["domain"] = TextOrNull(record.domain);
  json["options"] = options;
  return json;
}

Json ReadJson(const Target& target) {
  const DHCP_SUBNET_CONF record = Require(target);
  const std::unique_ptr<DHCP_OPTION, decltype(&DHCPOptionFree)> options(record.options,
                                                                        &DHCPOptionFree);
  return ToJson(target, record);
}

std::string TextOf(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  return value.is_null() ? "" : WrittenOut(value);
}

void Show(const Context& context, const Target& target) {
  const Json subnet = ReadJson(target);
  if (context.json) return PrintJson("subnet", subnet);
  std::vector<Row> rows;
  for (const auto& [name, value] : subnet.items()) {
    if (name == "options") continue;
    const bool list = value.is_array();
    rows.push_back(
        {{name}, {list ? Join(value.get<std::vector<std::string>>(), " ") : TextOf(value)}});
  }
  for (const Json& option : subnet.value("options", Json::array())) {
    rows.push_back({{option["name"].get<std::string>()},
                    {Join(option["values"].get<std::vector<std::string>>(), " ")}});
  }
  PrintTable(rows);
}

// ---- list

void CollectSubnets(const std::string& ifname, bool v6, Json* subnets) {
  for (Target target{ifname, 0, v6};; ++target.number) {
    int enable = 0;
    const int result = DHCPTagConfGetEnable(ifname.c_str(), target.number, target.Type(), &enable);
    if (result < 0) Fail(target.What("read"));
    if (result == 0) return;
    subnets->push_back(
        {{"number", target.number}, {"family", v6 ? 6 : 4}, {"enable", enable == 1}});
  }
}

void List(const Context& context, const std::string& ifname) {
  RequireName("cannot list the subnets of " + ifname, ifname);
  Json subnets = Json::array();
  ForgetErrors();
  for (const bool v6 : {false, true})
    CollectSubnets(ifname, v6, &subnets);
  if (context.json) return PrintJson("subnets", subnets);
  std::vector<Row> rows{Headings({"NUMBER", "FAMILY", "SERVED"})};
  for (const Json& subnet : subnets) {
    const bool on = subnet["enable"].get<bool>();
    rows.push_back({{TextOf(subnet["number"])},
                    {subnet["family"] == 6 ? "IPv6" : "IPv4"},
                    {on ? "yes" : "no", on ? Tone::kGood : Tone::kBad}});
  }
  PrintList(rows, "subnets");
}

// ---- set

// What the command line gives; what it does not give stays.
struct Given {
  std::string document;
  std::optional<std::string> start, end, netmask, router, domain, mode;
  std::optional<std::vector<std::string>> dns;
  std::optional<int> lease;
  std::vector<std::string> options;
  bool enable = false;
  bool disable = false;
};

void CopyOptions(const DHCP_SUBNET_CONF& stored, const std::string& what, Subnet* subnet) {
  for (const DHCP_OPTION* option = stored.options; option != nullptr; option = option->next) {
    std::vector<std::string> values;
    for (int i = 0; option->values != nullptr && i < option->values->nItem; ++i)
      values.emplace_back(KOPACSzListGet(option->values, i));
    if (option->values == nullptr) values.emplace_back(option->value);
    AddOption(what, option->name, values, subnet);
  }
}

// The stored subnet, or a new one that is served.
void Begin(const Target& target, bool keepOptions, Subnet* subnet) {
  const auto stored = Read(target);
  if (!stored) {
    subnet->record.lease = kDefaultLease;
    subnet->record.enable = 1;
    return;
  }
  const std::unique_ptr<DHCP_OPTION, decltype(&DHCPOptionFree)> owner(stored->options,
                                                                      &DHCPOptionFree);
  subnet->record = *stored;
  subnet->record.options = nullptr;
  if (keepOptions) CopyOptions(*stored, target.What("set"), subnet);
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    parts.push_back(text.substr(at, comma - at));
    at = comma + 1;
  }
  return parts;
}

void ApplyOptions(const std::string& what, const Given& given, Subnet* subnet) {
  for (const std::string& text : given.options) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
      throw WrongUsage("--option", "give NAME=VALUE[,VALUE...]");
    }
    AddOption(what, text.substr(0, equals), SplitAtCommas(text.substr(equals + 1)), subnet);
  }
}

template <std::size_t N>
void FillIfGiven(const std::string& what, const std::string& name,
                 const std::optional<std::string>& text, char (&field)[N]) {
  if (text) Put(what, name, *text, field);
}

void ApplyGiven(const std::string& what, const Given& given, Subnet* subnet) {
  DHCP_SUBNET_CONF& record = subnet->record;
  FillIfGiven(what, "start", given.start, record.start);
  FillIfGiven(what, "end", given.end, record.end);
  FillIfGiven(what, "netmask", given.netmask, record.netmask);
  FillIfGiven(what, "router", given.router, record.router);
  FillIfGiven(what, "domain", given.domain, record.domain);
  FillIfGiven(what, "mode", given.mode, record.v6mode);
  if (given.dns) SetServers(what, *given.dns, &record);
  if (given.lease) record.lease = *given.lease;
  if (given.enable || given.disable) record.enable = given.enable ? 1 : 0;
  ApplyOptions(what, given, subnet);
}

// ---- a whole subnet as JSON

[[noreturn]] void RefuseDocument(const std::string& what, const std::string& problem) {
  throw Failure(what, ZARNNETERR_BAD_PARAMETER, "the JSON document is no subnet: " + problem);
}

Json ReadDocument(const std::string& what) {
  Json document = ReadInput();
  if (document.is_object() && document.contains("subnet")) document = document["subnet"];
  if (!document.is_object()) RefuseDocument(what, "it is not an object");
  static const std::vector<std::string> known{"interface", "number", "family", "enable", "start",
                                              "end",       "lease",  "dns",    "mode",   "netmask",
                                              "router",    "domain", "options"};
  for (const auto& [name, value] : document.items()) {
    if (std::find(known.begin(), known.end(), name) == known.end())
      RefuseDocument(what, "unknown field '" + name + "'");
  }
  return document;
}

void RequireSame(const std::string& what, const Target& target, const Json& document) {
  const bool same = document.value("interface", Json(target.ifname)) == target.ifname &&
                    document.value("number", Json(target.number)) == target.number &&
                    document.value("family", Json(target.v6 ? 6 : 4)) == (target.v6 ? 6 : 4);
  if (!same) RefuseDocument(what, "it is another subnet's");
}

template <std::size_t N>
void FillFrom(const std::string& what, const Json& document, const char* name, char (&field)[N]) {
  const Json value = document.value(name, Json());
  if (!value.is_null()) Put(what, name, value.get<std::string>(), field);
}

void ApplyDocument(const std::string& what, const Json& document, Subnet* subnet) try {
  DHCP_SUBNET_CONF& record = subnet->record;
  record.enable = document.value("enable", true) ? 1 : 0;
  record.lease = document.value("lease", kDefaultLease);
  FillFrom(what, document, "start", record.start);
  FillFrom(what, document, "end", record.end);
  FillFrom(what, document, "netmask", record.netmask);
  FillFrom(what, document, "router", record.router);
  FillFrom(what, document, "domain", record.domain);
  FillFrom(what, document, "mode", record.v6mode);
  SetServers(what, document.value("dns", std::vector<std::string>()), &record);
  for (const Json& option : document.value("options", Json::array())) {
    AddOption(what, option.at("name").get<std::string>(),
              option.at("values").get<std::vector<std::string>>(), subnet);
  }
} catch (const Json::exception&) {
  RefuseDocument(what, "a field is of the wrong type");
}

// The writer takes every text, and one that its server cannot read would keep it from starting.
void RequireAddress(const std::string& what, const Target& target, const std::string& text) {
  if (!target.v6) return RequireIpv4(what, text);
  if (BlKOPAIsv6IpAddrValid(text.c_str()) == 1) return;
  throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS, "'" + text + "' is not an IPv6 address");
}

void RequireAddresses(const std::string& what, const Target& target,
                      const DHCP_SUBNET_CONF& record) {
  for (const char* text : {record.start, record.end, record.router, record.dns1, record.dns2}) {
    if (*text != '\0') RequireAddress(what, target, text);
  }
  if (*record.dns_more == '\0') return;
  for (const std::string& server : SplitAtCommas(record.dns_more))
    RequireAddress(what, target, server);
}

void RequireNetwork(const std::string& what, const DHCP_SUBNET_CONF& record) {
  if (BlKOPAIsValidIpMask(record.netmask) != 1 || !IsPlainDotted(record.netmask))
    throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS,
                  "'" + std::string(record.netmask) + "' is not a netmask");
  if (ZARNNetIsSameSubnet(record.start, record.end, record.netmask) != 1)
    throw Failure(what, ZARNNETERR_BAD_PARAMETER,
                  "the first and the last address are in different subnets");
  if (*record.router == '\0' || *record.dns1 == '\0')
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "give the router and a name server");
}

// A comma ends a value in the server's files, and a quote without another its file.
void RequireTexts(const std::string& what, const Target& target, const DHCP_SUBNET_CONF& record) {
  constexpr char kOfNames[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_";
  const std::string domain(record.domain);
  if (domain.find_first_not_of(kOfNames) != std::string::npos)
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "the domain has a character that no name has");
  bool fit = target.ifname.find_first_of("\",") == std::string::npos;
  for (const DHCP_OPTION* option = record.options; option != nullptr; option = option->next)
    fit = fit && std::string(option->value).find('"') == std::string::npos;
  if (!fit)
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "the server cannot read a quote or such a name");
  if (record.lease < 0)
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "a lease lasts a number of seconds");
}

void RequireServable(const std::string& what, const Target& target,
                     const DHCP_SUBNET_CONF& record) {
  const bool ranged = !target.v6 || std::string(record.v6mode) == "stateful";
  if (ranged && (*record.start == '\0' || *record.end == '\0'))
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "give the first and the last address");
  if (target.v6 && *record.v6mode == '\0')
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "give a mode");
  RequireAddresses(what, target, record);
  if (!target.v6) RequireNetwork(what, record);
  RequireTexts(what, target, record);
}

void Set(const Context& context, const Target& target, const Given& given) {
  const std::string what = target.What("set");
  RequireName(what, target.ifname);
  RequireRoot(what);
  Subnet subnet;
  if (given.document == "-") {
    const Json document = ReadDocument(what);
    RequireSame(what, target, document);
    ApplyDocument(what, document, &subnet);
  } else {
    Begin(target, given.options.empty(), &subnet);
    ApplyGiven(what, given, &subnet);
  }
  RequireServable(what, target, subnet.record);
  ForgetErrors();
  if (DHCPTagConfSet(target.ifname.c_str(), target.number, target.Type(), &subnet.record) < 0)
    Fail(what);
  if (context.json) PrintJson("subnet", ToJson(target, subnet.record));
}

std::shared_ptr<Target> AddTarget(const Verb& verb) {
  auto target = std::make_shared<Target>();
  verb.AddOption("IFNAME", target->ifname, "Interface that serves the subnet")
      .Required()
      .Interface();
  verb.AddOption("NUMBER", target->number, "0, 1, 2 ...").Required();
  verb.AddFlag("-6", target->v6, "The IPv6 subnet of this number");
  return target;
}

void AddSet(const Group& group, Context& context) {
  const Verb set = AddVerb(
      group, context, "set", "Makes or changes a subnet; dhcpd restart puts it into effect",
      "  zarnnetctl dhcpd subnet set eth0 0 --start 192.168.50.100 --end 192.168.50.150 \\\n"
      "    --netmask 255.255.255.0 --router 192.168.50.1 --dns 192.168.50.1 --option mtu=1400\n"
      "  zarnnetctl dhcpd subnet show eth0 0 --json | zarnnetctl dhcpd subnet set eth0 0 -");
  const auto target = AddTarget(set);
  auto given = std::make_shared<Given>();
  set.AddOption("DOCUMENT", given->document, "-: the whole subnet as JSON on standard input")
      .OneOf({"-"});
  set.AddOption("--start", given->start, "First address");
  set.AddOption("--end", given->end, "Last address");
  set.AddOption("--netmask", given->netmask, "Netmask (IPv4)");
  set.AddOption("--router", given->router, "Default gateway of the clients (IPv4)");
  set.AddOption("--domain", given->domain, "Domain of the clients (IPv4)");
  set.AddOption("--dns", given->dns, "Name servers, in order of use");
  set.AddOption("--lease", given->lease, "Seconds of a lease (3600)").Within(120, 2147483647);
  set.AddOption("--mode", given->mode, "IPv6: off, ra-only, ra-stateless or stateful")
      .OneOf({"off", "ra-only", "ra-stateless", "stateful"});
  set.AddOption("--option", given->options,
                "NAME=VALUE[,VALUE...]; those given replace the stored ones");
  const Word enable = set.AddFlag("--enable", given->enable, "Serve it");
  set.AddFlag("--disable", given->disable, "Keep it without serving it").Excludes(enable);
  set.Run([&context, target, given] { Set(context, *target, *given); });
}

}  // namespace

void AddDhcpdSubnetCommands(const Group& dhcpd, Context& context) {
  const Group group = AddGroup(dhcpd, "subnet", "Lists, shows and sets the subnets served");
  const Verb list = AddVerb(group, context, "list", "Lists the subnets of an interface",
                            "  zarnnetctl dhcpd subnet list eth0");
  const auto listed = AddIfname(list);
  list.Run([&context, listed] { List(context, *listed); });
  const Verb show = AddVerb(group, context, "show", "Shows one subnet",
                            "  zarnnetctl dhcpd subnet show eth0 0 --json");
  const auto target = AddTarget(show);
  show.Run([&context, target] { Show(context, *target); });
  AddSet(group, context);
}

}  // namespace tool
