// SPDX-License-Identifier: Apache-2.0
// zarnnetctl if: which interfaces there are, and all about one of them.
#include <algorithm>
#include <array>
#include <charconv>

#include "commands.h"
#include "interfaces.h"
#include "query.h"
#include "roles.h"

namespace tool {
namespace {

constexpr int kCarrier = 2;                      // the record's link field
constexpr unsigned kWithHeartbeat = 0x4;         // an option bit of the library's selector
constexpr unsigned kAll = 0x3 | kWithHeartbeat;  // all but loopback and point-to-point
constexpr unsigned kWithPointToPoint = 0x8 | kWithHeartbeat;

std::optional<unsigned> ParseSelector(const std::string& text) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

std::string CheckKind(const std::string& text) {
  if (text == "eth" || text == "all" || ParseSelector(text).value_or(0) > 0) return {};
  return "KIND must be eth, all or a number above 0, not " + text;
}

// ---- if list

Json RecordJson(const KOPANetIfInfo& info) {
  return {{"name", info.name},
          {"mac", TextOrNull(MacText(info.mac))},
          {"ip", TextOrNull(info.ip)},
          {"mask", TextOrNull(info.mask)},
          {"link", info.link},
          {"flags", info.flags},
          {"flag_names", FlagNames(info.flags)}};
}

// "10.0.0.1/8" has 255.0.0.0.
std::string MaskText(const std::string& cidr) {
  std::array<char, 64> text{};
  cidr.copy(text.data(), text.size() - 1);
  if (ErrKOPASubnetToIpMask(text.data(), nullptr) != 0) return {};
  const std::string converted(text.data());
  return converted.substr(converted.find('/') + 1);
}

Cell LinkCell(int link) {
  return link == kCarrier ? Cell{"yes", Tone::kGood} : Cell{"no", Tone::kBad};
}

Row RowOf(const KOPANetIfInfo& info) {
  return {{info.name},
          LinkCell(info.link),
          {Join(FlagNames(info.flags), ",")},
          {MacText(info.mac)},
          {AddressText({info.ip, info.mask})}};
}

Row RowOf(const Interface& interface) {
  return {{interface.name},
          LinkCell(interface.HasCarrier() ? kCarrier : 0),
          {Join(FlagNames(static_cast<std::int16_t>(interface.flags)), ",")},
          {interface.mac},
          {Join(interface.addresses, " ")}};
}

// The library's record, and all addresses.
Json RecordJson(const Interface& interface) {
  KOPANetIfInfo info{};
  interface.name.copy(info.name, sizeof info.name - 1);
  info.link = interface.HasCarrier() ? kCarrier : 0;
  info.flags = static_cast<std::int16_t>(interface.flags);
  Json record = RecordJson(info);
  record["mac"] = TextOrNull(interface.mac);
  const std::string first = interface.Ipv4();
  record["ip"] = TextOrNull(first.substr(0, first.find('/')));
  record["mask"] = TextOrNull(first.empty() ? "" : MaskText(first));
  record["up"] = interface.IsUp();
  record["addresses"] = interface.addresses;
  return record;
}

// Up or down.
std::vector<Interface> ListOfKernel(bool ethernet) {
  std::vector<Interface> list = ReadInterfaces();
  std::erase_if(list, [&](const Interface& interface) {
    const bool port =
        interface.name.starts_with("eth") && interface.name.find('.') == std::string::npos;
    const bool wanted = !interface.IsLoopback() && !interface.IsPointToPoint();
    return !(ethernet ? port : wanted);
  });
  return list;
}

// What the kernel has, or one of the library's lists, printed either way.
template <class Entry>
void Print(const Context& context, const std::vector<Entry>& list) {
  if (context.json) {
    Json records = Json::array();
    for (const Entry& entry : list)
      records.push_back(RecordJson(entry));
    return PrintJson("interfaces", records);
  }
  std::vector<Row> rows{Headings({"NAME", "LINK", "FLAGS", "MAC", "ADDRESS"})};
  for (const Entry& entry : list)
    rows.push_back(RowOf(entry));
  PrintList(rows, "interfaces");
}

void List(const Context& context, const std::string& kind) {
  if (const auto selector = ParseSelector(kind)) return Print(context, ListInterfaces(*selector));
  Print(context, ListOfKernel(kind == "eth"));
}

// ---- if show

struct Details {
  std::string name;
  bool up = false;
  std::optional<KOPANetIfInfo> record;  // only of an interface that is up
  std::string mac;
  Address address;
  std::vector<ZARNNETV6ADDR> ipv6;
  std::optional<Configuration> configuration;
  bool localLan = false;
  std::optional<Bond> bond;
  bool bondMember = false;
  std::optional<Bridge> bridge;
  std::string ovs;  // "bond", "device", "member" or empty
  std::optional<KOPANETVLAN> vlan;
  std::vector<std::string> blocks;
};

std::optional<KOPANetIfInfo> FindIn(const std::vector<KOPANetIfInfo>& list,
                                    const std::string& ifname) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [&](const KOPANetIfInfo& info) { return ifname == info.name; });
  return found == list.end() ? std::nullopt : std::optional(*found);
}

// No single list of the library has all: bridge ports are among the Ethernet ports alone.
std::optional<KOPANetIfInfo> FindRecord(const std::string& ifname) {
  for (const unsigned selector : {kAll, kWithPointToPoint}) {
    if (const auto found = FindIn(ListInterfaces(selector), ifname)) return found;
  }
  return FindIn(ListEthernetPorts(), ifname);
}

// The address of an Ethernet port that is down. The library takes other names, a VLAN's for one,
// for the port behind them, whose address need not be theirs.
std::string PortMac(const std::string& ifname) {
  const bool isPort = ifname.starts_with("eth") && ifname.size() > 3 &&
                      ifname.find_first_not_of("0123456789", 3) == std::string::npos;
  std::array<char, 18> mac{};
  if (!isPort || KOPANetGetMacAddrByInterface(ifname.c_str(), mac.data(), int{mac.size()}, 1) != 0)
    return {};
  return mac.data();
}

Details ReadDetails(const std::string& ifname) {
  Details details;
  details.name = ifname;
  details.up = ZARNNetIsIFUp(ifname.c_str()) == 1;
  if (details.up) details.record = FindRecord(ifname);
  details.mac = details.record ? MacText(details.record->mac) : PortMac(ifname);
  details.address = LiveAddress(ifname);
  details.ipv6 = ReadIpv6(ifname);
  details.configuration = ReadConfiguration(ifname);
  details.localLan = KOPANetIFIsLocalLan(ifname.c_str()) == 1;
  details.bond = ReadBond(ifname);
  details.bondMember = ZARNNetIfIsBondingPassive(ifname.c_str()) == 1;
  details.bridge = ReadBridge(ifname);
  details.ovs = ReadOvs(ifname);
  details.vlan = ReadVlan(ifname);
  details.blocks = ReadBlocks(ifname);
  return details;
}

bool HasCarrier(const Details& details) {
  return ZARNNetIfIsLink(details.name.c_str()) == 1;
}

// Fields that stand in the record alone are null for an interface without one.
Json LiveJson(const Details& details) {
  if (details.record) return RecordJson(*details.record);
  return {{"name", details.name},
          {"mac", TextOrNull(details.mac)},
          {"ip", TextOrNull(details.address.ip)},
          {"mask", TextOrNull(details.address.mask)},
          {"link", HasCarrier(details) ? kCarrier : 0},
          {"flags", nullptr},
          {"flag_names", nullptr}};
}

Json DetailsJson(const Details& details) {
  Json json = LiveJson(details);
  json["up"] = details.up;
  json["ipv6"] = ToJson(details.ipv6);
  json["config"] = ToJson(details.configuration);
  json["local_lan"] = details.localLan;
  json["bond"] = ToJson(details.bond);
  json["bond_member"] = details.bondMember;
  json["bridge"] = ToJson(details.bridge);
  json["ovs"] = TextOrNull(details.ovs);
  json["vlan"] = ToJson(details.vlan);
  json["block"] = details.blocks;
  return json;
}

// Every part that the interface plays, in words.
std::string RoleText(const Details& details) {
  std::vector<std::string> roles;
  if (details.bond)
    roles.push_back("bond " + details.bond->mode + " of " + Join(details.bond->slaves, " "));
  if (details.bondMember) roles.emplace_back("bond member");
  if (details.bridge && details.bridge->type == "port") {
    const std::string& bridge = details.bridge->ref;
    roles.push_back(bridge.empty() ? "port of a bridge" : "port of bridge " + bridge);
  } else if (details.bridge) {
    roles.push_back("bridge of " + Join(details.bridge->ports, " "));
  }
  if (!details.ovs.empty()) roles.push_back("Open vSwitch " + details.ovs);
  if (details.vlan) {
    roles.push_back("VLAN " + std::to_string(details.vlan->id) + " on " + details.vlan->szRowDev);
  }
  return Join(roles, ", ");
}

std::vector<std::string> Ipv6Texts(const std::vector<ZARNNETV6ADDR>& addresses) {
  std::vector<std::string> texts;
  texts.reserve(addresses.size());
  for (const ZARNNETV6ADDR& address : addresses)
    texts.push_back(Ipv6Text(address));
  return texts;
}

void PrintDetails(const Details& details) {
  const auto& record = details.record;
  PrintTable({{{"name"}, {details.name}},
              {{"state"}, details.up ? Cell{"up", Tone::kGood} : Cell{"down", Tone::kBad}},
              {{"link"}, LinkCell(HasCarrier(details) ? kCarrier : 0)},
              {{"flags"}, {record ? Join(FlagNames(record->flags), ",") : ""}},
              {{"mac"}, {details.mac}},
              {{"address"}, {AddressText(details.address)}},
              {{"ipv6"}, {Join(Ipv6Texts(details.ipv6), " ")}},
              {{"configured"}, {ConfigurationText(details.configuration)}},
              {{"local lan"}, {details.localLan ? "yes" : "no"}},
              {{"role"}, {RoleText(details)}},
              {{"blocked by"}, {Join(details.blocks, " ")}}});
}

void Show(const Context& context, const std::string& ifname) {
  RequireInterface("cannot show " + ifname, ifname);
  const Details details = ReadDetails(ifname);
  if (context.json) return PrintJson("interface", DetailsJson(details));
  PrintDetails(details);
}

}  // namespace

void AddIfCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "if", "Lists and shows interfaces");

  const Verb list = AddVerb(group, context, "list", "Lists the interfaces, up or down",
                            "  zarnnetctl if list\n  zarnnetctl if list --kind eth --json\n  "
                            "zarnnetctl if list --kind 1");
  auto kind = std::make_shared<std::string>("all");
  list.AddOption("--kind", *kind,
                 "eth: Ethernet ports; all (default): all but loopback and point-to-point; "
                 "N: the library's selector of those that are up")
      .Checked(CheckKind, "eth|all|N");
  list.Run([&context, kind] { List(context, *kind); });

  const Verb show = AddVerb(group, context, "show", "Shows all about one interface",
                            "  zarnnetctl if show eth0\n  zarnnetctl if show bond0 --json");
  const auto ifname = AddIfname(show);
  show.Run([&context, ifname] { Show(context, *ifname); });
}

}  // namespace tool
