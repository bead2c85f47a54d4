// SPDX-License-Identifier: Apache-2.0
// zarnnetctl dhcpd: the built-in DHCP server's switches and restart, ranges, vendor classes and
// network boot.
#include <algorithm>
#include <array>
#include <cstring>
#include <map>

#include "commands.h"
#include "list.h"
#include "put.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

// ---- status, enable, disable, restart

Json SwitchesJson() {
  Json list = Json::array();
  const Json interfaces = PartOf(ReadState({"dhcp_server"}), "/dhcp_server/interfaces");
  for (const auto& [ifname, served] : interfaces.items()) {
    const auto isOn = [&served = served](const char* family) {
      return PartOf(served, std::string("/") + family + "/enabled") == true;
    };
    list.push_back({{"name", ifname}, {"ipv4", isOn("ipv4")}, {"ipv6", isOn("ipv6")}});
  }
  return list;
}

Json StatusJson() {
  return {{"enabled", DHCPIsEnabled() == 1}, {"interfaces", SwitchesJson()}};
}

Cell OnOff(const Json& value) {
  return value.get<bool>() ? Cell{"on", Tone::kGood} : Cell{"off", Tone::kBad};
}

void Status(const Context& context) {
  const Json status = StatusJson();
  if (context.json) return PrintJson("dhcpd", status);
  std::vector<Row> rows{Headings({"SERVER", "IPV4", "IPV6"})};
  rows.push_back({{"all"}, OnOff(status["enabled"]), OnOff(status["enabled"])});
  for (const Json& entry : status["interfaces"])
    rows.push_back(
        {{entry["name"].get<std::string>()}, OnOff(entry["ipv4"]), OnOff(entry["ipv6"])});
  PrintTable(rows);
}

void Switch(Context& context, const std::string& ifname, bool v6, bool on) {
  Json wish;
  wish["dhcp_server"]["interfaces"][ifname][v6 ? "ipv6" : "ipv4"]["enabled"] = on;
  MakeChange(context, wish);
}

void AddSwitch(const Group& group, Context& context, bool on) {
  const std::string name = on ? "enable" : "disable";
  const Verb verb =
      AddChange(group, context, name, on ? "Serves an interface" : "Stops serving an interface",
                "  zarnnetctl dhcpd " + name + " eth0\n  zarnnetctl dhcpd " + name + " eth0 -6");
  const auto ifname = AddIfname(verb);
  auto v6 = std::make_shared<bool>(false);
  verb.AddFlag("-6", *v6, "IPv6 instead of IPv4");
  verb.Run([&context, ifname, v6, on] { Switch(context, *ifname, *v6, on); });
}

void AddWholeSwitch(const Group& group, Context& context, bool on) {
  const std::string name = on ? "on" : "off";
  AddChange(group, context, name, "Switches the whole server " + name, "  zarnnetctl dhcpd " + name)
      .Run([&context, on] {
        MakeChange(context, {{"dhcp_server", {{"enabled", on}}}});
      });
}

// ---- option list

void ListOptions(const Context& context) {
  Json options = Json::array();
  std::vector<Row> rows{Headings({"NUMBER", "NAME", "VALUES"})};
  for (const ZARNNET_DHCP_OPTION& option : ZARNNetDhcpOptions) {
    const bool list = DHCPOptionIsListValue(option.number) == 1;
    options.push_back({{"number", option.number}, {"name", option.name}, {"list", list}});
    rows.push_back({{std::to_string(option.number)}, {option.name}, {list ? "list" : "one"}});
  }
  if (context.json) return PrintJson("options", options);
  PrintTable(rows);
}

// ---- range check

struct Range {
  std::string start, end, netmask;
};

void CheckRange(const Context& context, const std::string& ifname, const Range& range) {
  const std::string what = "cannot check the range";
  RequireName(what, ifname);
  RequireIpv4(what, range.start);
  RequireIpv4(what, range.end);
  if (BlKOPAIsValidIpMask(range.netmask.c_str()) != 1 || !IsPlainDotted(range.netmask))
    throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS, "'" + range.netmask + "' is not a netmask");
  std::array<char, 16> other{};
  ForgetErrors();
  const int result = DHCPIsRangeConflict(ifname.c_str(), range.start.c_str(), range.end.c_str(),
                                         range.netmask.c_str(), other.data(), other.size());
  if (result < 0) Fail(what);
  if (context.json) {
    return PrintJson("range", {{"conflict", result == 1}, {"interface", TextOrNull(other.data())}});
  }
  PrintTable(
      {{{range.start + " - " + range.end},
        result == 1 ? Cell{std::string("conflicts with a range on ") + other.data(), Tone::kBad}
                    : Cell{"free", Tone::kGood}}});
}

void AddRange(const Group& app, Context& context) {
  const Group group = AddGroup(app, "range", "Checks address ranges");
  const Verb check =
      AddVerb(group, context, "check", "Does another interface serve this network?",
              "  zarnnetctl dhcpd range check eth0 192.168.50.100 192.168.50.150 255.255.255.0");
  const auto ifname = AddIfname(check);
  auto range = std::make_shared<Range>();
  check.AddOption("START", range->start, "First address").Required();
  check.AddOption("END", range->end, "Last address").Required();
  check.AddOption("NETMASK", range->netmask, "Its netmask").Required();
  check.Run([&context, ifname, range] { CheckRange(context, *ifname, *range); });
}

// ---- vendor

// A hash of the library's, let go at the end of its scope.
class Hash {
 public:
  Hash() : hash_(KOPACSzHashAlloc(256)) {
    if (hash_ == nullptr) throw std::bad_alloc();
  }
  ~Hash() { KOPACSzHashFree(hash_); }
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;

  [[nodiscard]] PKOPACSZHASH* Out() { return &hash_; }
  [[nodiscard]] std::map<int, std::string> Options() const {
    NameList keys;
    if (KOPACSzHashEnumKey(hash_, keys.Out()) < 0) throw std::bad_alloc();
    std::map<int, std::string> options;
    for (const std::string& key : keys.Items())
      options[std::stoi(key)] = KOPACSzHashGetValue(hash_, key.c_str());
    return options;
  }

 private:
  PKOPACSZHASH hash_;
};

Json VendorJson(const std::string& vendor) {
  Hash hash;
  ForgetErrors();
  if (DHCPVendorGetVendor(vendor.c_str(), hash.Out()) < 0)
    Fail("cannot read the vendor class " + vendor);
  Json options = Json::array();
  for (const auto& [number, value] : hash.Options())
    options.push_back({{"number", number}, {"value", value}});
  return {{"name", vendor}, {"options", options}};
}

void ListVendors(const Context& context) {
  NameList vendors;
  ForgetErrors();
  if (DHCPVendorEnum(vendors.Out()) < 0) Fail("cannot list the vendor classes");
  if (context.json) return PrintJson("vendors", vendors.Items());
  std::vector<Row> rows;
  for (const std::string& vendor : vendors.Items())
    rows.push_back({{vendor}});
  PrintTable(rows);
}

void ShowVendor(const Context& context, const std::string& vendor) {
  const Json json = VendorJson(vendor);
  if (context.json) return PrintJson("vendor", json);
  std::vector<Row> rows;
  for (const Json& option : json["options"])
    rows.push_back({{WrittenOut(option["number"])}, {option["value"].get<std::string>()}});
  PrintTable(rows);
}

// What is stored and not named goes; a class without options is none.
Json WantedVendor(const std::string& vendor, const std::vector<std::string>& options) {
  if (options.empty()) return nullptr;
  Json wanted = Json::object();
  const Json stored = VendorJson(vendor);
  for (const Json& option : stored["options"])
    wanted[WrittenOut(option["number"])] = nullptr;
  for (const std::string& text : options) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw WrongUsage("OPTION", "give NUMBER=VALUE");
    wanted[text.substr(0, equals)] = text.substr(equals + 1);
  }
  return wanted;
}

void SetVendor(Context& context, const std::string& vendor,
               const std::vector<std::string>& options) {
  Json wish;
  wish["dhcp_server"]["vendors"][vendor] = WantedVendor(vendor, options);
  MakeChange(context, wish);
}

std::shared_ptr<std::string> AddVendorName(const Verb& verb) {
  return AddOperand(verb, "VENDOR", "The class that clients name themselves");
}

void AddVendor(const Group& app, Context& context) {
  const Group group = AddGroup(app, "vendor", "Options for the clients of one vendor class");
  AddVerb(group, context, "list", "Lists the classes that have options",
          "  zarnnetctl dhcpd vendor list", ListVendors);
  AddVerb(group, context, "show", "Shows the options of a class",
          "  zarnnetctl dhcpd vendor show Example", AddVendorName, ShowVendor);
  const Verb set =
      AddChange(group, context, "set", "Replaces the options of a class; without any it goes",
                "  zarnnetctl dhcpd vendor set Example 43=01:04:00 60=Example");
  const auto changed = AddVendorName(set);
  auto options = std::make_shared<std::vector<std::string>>();
  set.AddOption("OPTION", *options, "NUMBER=VALUE");
  set.Run([&context, changed, options] { SetVendor(context, *changed, *options); });
}

// ---- pxe

Json PxeJson() {
  DHCP_PXE_CONF conf{};
  ForgetErrors();
  if (DHCPPXEConfGet(&conf) < 0) Fail("cannot read the settings of network boot");
  return {{"enabled", conf.enable == 1},
          {"remote", conf.is_remote_tftp != 0},
          {"local_loader", TextOrNull(conf.local_bootloader)},
          {"remote_loader", TextOrNull(conf.remote_bootloader)},
          {"server", TextOrNull(conf.remote_tftp_server_ip)}};
}

void ShowPxe(const Context& context) {
  const Json pxe = PxeJson();
  if (context.json) return PrintJson("pxe", pxe);
  const auto text = [&pxe](const char* name) {
    return pxe[name].is_null() ? std::string() : pxe[name].get<std::string>();
  };
  const bool remote = pxe["remote"].get<bool>();
  PrintTable({{{"network boot"}, OnOff(pxe["enabled"])},
              {{"loader"}, {text(remote ? "remote_loader" : "local_loader")}},
              {{"from"}, {remote ? text("server") : "the appliance"}}});
}

struct WantedPxe {
  bool off = false;
  std::string loader, server;
};

void SetPxe(Context& context, const WantedPxe& wanted) {
  if (wanted.off != wanted.loader.empty())
    throw WrongUsage("LOADER", "give the name of the boot file, or --off");
  const bool remote = !wanted.server.empty();
  Json boot{{"enabled", !wanted.off}};
  if (!wanted.off) {
    boot["remote"] = remote;
    boot[remote ? "remote_loader" : "local_loader"] = wanted.loader;
  }
  if (remote) boot["server"] = wanted.server;
  MakeChange(context, {{"dhcp_server", {{"network_boot", boot}}}});
}

void AddPxe(const Group& app, Context& context) {
  const Group group = AddGroup(app, "pxe", "Network boot");
  const Verb show =
      AddVerb(group, context, "show", "Shows the settings", "  zarnnetctl dhcpd pxe show");
  show.Run([&context] { ShowPxe(context); });
  const Verb set = AddChange(group, context, "set", "Sets the boot file, or switches it off",
                             "  zarnnetctl dhcpd pxe set pxelinux.0\n"
                             "  zarnnetctl dhcpd pxe set pxelinux.0 --server 192.168.50.2\n"
                             "  zarnnetctl dhcpd pxe set --off");
  auto wanted = std::make_shared<WantedPxe>();
  set.AddOption("LOADER", wanted->loader, "Name of the boot file on its TFTP server");
  set.AddOption("--server", wanted->server, "A remote TFTP server instead of the appliance");
  set.AddFlag("--off", wanted->off, "No network boot; the settings stay");
  set.Run([&context, wanted] { SetPxe(context, *wanted); });
}

// ---- dhcp test

// The trial run of the client: the interface is left as it is.
void TryClient(const Context& context, const std::string& ifname) {
  const std::string what = "cannot ask for an address at " + ifname;
  RequireRoot(what);
  RequireInterface(what, ifname);
  ZARNNETIFADDR offer{};
  Put(what, "name", ifname, offer.szName);
  ForgetErrors();
  if (ZARNIGetDHCPTestNetInfo(&offer) < 0)
    throw Failure(what, KOPACErrGet(), "no DHCP server answered; is there a cable, and a server?",
                  kFailed);
  const Address address{offer.szIP, offer.szMask};
  if (context.json)
    return PrintJson("dhcp", {{"name", ifname}, {"ip", address.ip}, {"mask", address.mask}});
  PrintTable({{{"offered"}, {AddressText(address), Tone::kGood}}});
}

}  // namespace

void AddDhcpdCommands(const Group& app, Context& context) {
  AddVerb(AddGroup(app, "dhcp", "The DHCP client"), context, "test",
          "Shows the address that a DHCP server would give; the interface stays as it is",
          "  zarnnetctl dhcp test eth0", AddIfname, TryClient);
  const Group group = AddGroup(app, "dhcpd", "The built-in DHCP server");
  const Verb status =
      AddVerb(group, context, "status", "Shows what is switched on", "  zarnnetctl dhcpd status");
  status.Run([&context] { Status(context); });
  AddSwitch(group, context, true);
  AddSwitch(group, context, false);
  AddWholeSwitch(group, context, true);
  AddWholeSwitch(group, context, false);
  AddChange(group, context, "restart", "Starts the server anew", "  zarnnetctl dhcpd restart")
      .Run([&context] { MakeChange(context, {}, {"/dhcp_server"}); });
  AddDhcpdSubnetCommands(group, context);
  const Group options = AddGroup(group, "option", "The options of an IPv4 subnet");
  const Verb list =
      AddVerb(options, context, "list", "Lists them", "  zarnnetctl dhcpd option list");
  list.Run([&context] { ListOptions(context); });
  AddRange(group, context);
  AddVendor(group, context);
  AddPxe(group, context);
}

}  // namespace tool
