// SPDX-License-Identifier: Apache-2.0
// Subnets of the DHCP server, with the options of the library's table as fields of their own.
#include "document/dhcp_subnet.h"

#include <limits>

#include <zarnnetsdk/dhcp_options.h>

namespace change {
namespace {

constexpr long kMost = std::numeric_limits<int>::max();
constexpr long kLeastLease = 120;
constexpr int kUsualLease = 3600;

// ---- the shape

Shape OptionShape(const ZARNNET_DHCP_OPTION& option) {
  const std::string description = "Option " + std::to_string(option.number);
  switch (option.takes) {
    case ZARNNET_DHCP_INTEGER:
      return Number(description, option.least, option.most);
    case ZARNNET_DHCP_UNSIGNED:
      return Number(description, 0, kMost);
    case ZARNNET_DHCP_NODE_TYPE:
      return Number(description + ": 1, 2, 4 or 8", 1, 8);
    case ZARNNET_DHCP_ADDRESS:
      return Text(description, Format::kIpv4, 15);
    case ZARNNET_DHCP_ADDRESSES:
      return List(description, Text("Address", Format::kIpv4, 15));
    case ZARNNET_DHCP_PAIRS:
      return List(description, Text("Address and netmask in turn", Format::kIpv4, 15));
    case ZARNNET_DHCP_ROUTES:
      return List(description, Text("ADDRESS/PREFIX and gateway in turn", Format::kAny, 18));
    default:
      return Text(description, Format::kAny, 1023);
  }
}

Shape OptionsShape() {
  std::vector<Field> options;
  for (const ZARNNET_DHCP_OPTION& option : ZARNNetDhcpOptions)
    options.push_back({option.name, OptionShape(option)});
  return Object("Further options, by the server's names", std::move(options));
}

// ---- reading

Json ValueOf(const DHCP_OPTION& option, const ZARNNET_DHCP_OPTION& row) {
  if (row.takes >= ZARNNET_DHCP_ADDRESSES) return Names::TextsIn(option.values);
  const bool number = row.takes <= ZARNNET_DHCP_NODE_TYPE;
  return number && Fits(option.value, Format::kNumber) ? Json(std::stol(option.value))
                                                       : Json(option.value);
}

Json OptionsOf(const DHCP_OPTION* option) {
  Json options = Json::object();
  for (; option != nullptr; option = option->next) {
    for (const ZARNNET_DHCP_OPTION& row : ZARNNetDhcpOptions) {
      if (row.number == option->number) options[row.name] = ValueOf(*option, row);
    }
  }
  return options.empty() ? Json() : options;
}

std::string Written(const Json& value) {
  return value.is_string() ? TextOf(value) : value.dump();
}

}  // namespace

Shape SubnetShape(Family family, bool withOptions) {
  const Format address = family == Family::kV4 ? Format::kIpv4 : Format::kIpv6;
  std::vector<Field> fields{
      {"enabled", Flag("Is it served")},
      {"start", Text("First address", address, 45)},
      {"end", Text("Last address", address, 45)},
      {"lease", Number("Time of a lease, in seconds", kLeastLease, kMost)},
      {"dns", List("Name servers of the clients", Text("A server", address, 45))}};
  if (family == Family::kV6) {
    fields.push_back(
        {"mode", Word("What clients are told", {"off", "ra-only", "ra-stateless", "stateful"})});
  } else {
    fields.push_back({"prefix", Number("Length of the subnet's prefix, in bits", 1, 32)});
    fields.push_back({"router", Text("Default gateway of the clients", address, 15)});
    fields.push_back({"domain", Text("Domain of the clients", Format::kAny, 254)});
  }
  if (withOptions) fields.push_back({"options", OptionsShape()});
  return Object("One subnet", std::move(fields));
}

Json SubnetOf(const DHCP_SUBNET_CONF& record, Family family, bool withOptions) {
  Json subnet{{"enabled", record.enable == 1}, {"lease", record.lease}};
  Put(&subnet, "start", record.start);
  Put(&subnet, "end", record.end);
  for (const char* server : {record.dns1, record.dns2}) {
    if (*server != '\0') subnet["dns"].push_back(server);
  }
  if (family == Family::kV6) {
    Put(&subnet, "mode", record.v6mode);
    return subnet;
  }
  if (const long prefix = PrefixOf(record.netmask)) subnet["prefix"] = prefix;
  Put(&subnet, "router", record.router);
  Put(&subnet, "domain", record.domain);
  if (withOptions) Put(&subnet, "options", OptionsOf(record.options));
  return subnet;
}

SubnetRecord::SubnetRecord(const std::string& ifname, const Json& subnet, Family family) {
  const auto text = [&](const char* field) { return TextOf(Member(subnet, field)); };
  record.enable = subnet.value("enabled", true) ? 1 : 0;
  record.lease = static_cast<int>(NumberOf(Member(subnet, "lease"), kUsualLease));
  Fill(ifname, record.interface);
  Fill(text("start"), record.start);
  Fill(text("end"), record.end);
  auto servers = TextsOf(Member(subnet, "dns"));
  servers.resize(std::max<std::size_t>(servers.size(), 2));
  Fill(servers[0], record.dns1);
  Fill(servers[1], record.dns2);
  servers.erase(servers.begin(), servers.begin() + 2);
  Fill(Joined(servers, ","), record.dns_more);
  Fill(text("mode"), record.v6mode);
  if (family == Family::kV6) return;
  Fill(MaskOf(NumberOf(Member(subnet, "prefix"))), record.netmask);
  Fill(text("router"), record.router);
  Fill(text("domain"), record.domain);
  FillOptions(Member(subnet, "options"));
}

void SubnetRecord::FillOptions(const Json& options) {
  for (const ZARNNET_DHCP_OPTION& row : ZARNNetDhcpOptions) {
    const Json& value = Member(options, row.name);
    if (value.is_null()) continue;
    auto option = std::make_unique<DHCP_OPTION>();
    option->number = row.number;
    Fill(row.name, option->name);
    if (value.is_array()) {
      lists_.push_back(std::make_unique<Names>(TextsOf(value)));
      option->values = lists_.back()->Get();
    } else {
      Fill(Written(value), option->value);
    }
    if (!options_.empty()) options_.back()->next = option.get();
    options_.push_back(std::move(option));
  }
  record.options = options_.empty() ? nullptr : options_.front().get();
}

}  // namespace change
