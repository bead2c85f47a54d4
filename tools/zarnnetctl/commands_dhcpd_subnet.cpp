// SPDX-License-Identifier: Apache-2.0
// zarnnetctl dhcpd subnet: the subnets that the built-in DHCP server serves.
#include <algorithm>
#include <charconv>
#include <memory>

#include "commands.h"
#include "list.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

constexpr int kIpv4 = 0;
constexpr int kIpv6 = 1;

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
  std::optional<std::string> start, end, netmask, router, domain, mode;
  std::optional<std::vector<std::string>> dns;
  std::optional<int> lease;
  std::vector<std::string> options;
  bool enable = false;
  bool disable = false;
};

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    parts.push_back(text.substr(at, comma - at));
    at = comma + 1;
  }
  return parts;
}

// As the document has the option; what cannot be its value is for the document to refuse.
Json OptionValue(const std::string& name, const std::string& text) {
  if (text.empty()) return nullptr;
  const auto* const option =
      std::find_if(std::begin(ZARNNetDhcpOptions), std::end(ZARNNetDhcpOptions),
                   [&](const ZARNNET_DHCP_OPTION& each) { return name == each.name; });
  if (option == std::end(ZARNNetDhcpOptions)) return text;
  if (option->takes >= ZARNNET_DHCP_ADDRESSES) return SplitAtCommas(text);
  if (option->takes > ZARNNET_DHCP_NODE_TYPE) return text;
  long number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && rest == end ? Json(number) : Json(text);
}

Json OptionsWish(const std::vector<std::string>& options) {
  Json wish = Json::object();
  for (const std::string& text : options) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
      throw WrongUsage("--option", "give NAME=VALUE[,VALUE...], or NAME= to remove it");
    const std::string name = text.substr(0, equals);
    wish[name] = OptionValue(name, text.substr(equals + 1));
  }
  return wish;
}

int PrefixOf(const std::string& netmask) {
  if (BlKOPAIsValidIpMask(netmask.c_str()) != 1 || !IsPlainDotted(netmask))
    throw WrongUsage("--netmask", "'" + netmask + "' is not a netmask such as 255.255.255.0");
  return ZARNNetNetmaskToPrefix(netmask.c_str());
}

Json SubnetWish(const Given& given) {
  Json subnet = Json::object();
  const auto put = [&subnet](const char* name, const std::optional<std::string>& text) {
    if (text) subnet[name] = TextOrNull(*text);
  };
  put("start", given.start);
  put("end", given.end);
  put("router", given.router);
  put("domain", given.domain);
  put("mode", given.mode);
  if (given.netmask) subnet["prefix"] = PrefixOf(*given.netmask);
  if (given.dns) subnet["dns"] = *given.dns;
  if (given.lease) subnet["lease"] = *given.lease;
  if (given.enable || given.disable) subnet["enabled"] = given.enable;
  if (!given.options.empty()) subnet["options"] = OptionsWish(given.options);
  return subnet;
}

void Set(Context& context, const Target& target, const Given& given) {
  Json wish;
  Json& interface = wish["dhcp_server"]["interfaces"][target.ifname];
  interface[target.v6 ? "ipv6" : "ipv4"]["subnets"][std::to_string(target.number)] =
      SubnetWish(given);
  MakeChange(context, wish);
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
  const Verb set = AddChange(
      group, context, "set", "Makes a subnet, or changes what is given of one",
      "  zarnnetctl dhcpd subnet set eth0 0 --start 192.168.50.100 --end 192.168.50.150 \\\n"
      "    --netmask 255.255.255.0 --router 192.168.50.1 --dns 192.168.50.1 --option mtu=1400");
  const auto target = AddTarget(set);
  auto given = std::make_shared<Given>();
  set.AddOption("--start", given->start, "First address");
  set.AddOption("--end", given->end, "Last address");
  set.AddOption("--netmask", given->netmask, "Netmask (IPv4)");
  set.AddOption("--router", given->router, "Default gateway of the clients (IPv4)");
  set.AddOption("--domain", given->domain, "Domain of the clients (IPv4)");
  set.AddOption("--dns", given->dns, "Name servers, in order of use");
  set.AddOption("--lease", given->lease, "Seconds of a lease (3600)");
  set.AddOption("--mode", given->mode, "IPv6: off, ra-only, ra-stateless or stateful")
      .OneOf({"off", "ra-only", "ra-stateless", "stateful"});
  set.AddOption("--option", given->options, "NAME=VALUE[,VALUE...]; NAME= removes it");
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
