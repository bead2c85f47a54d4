// SPDX-License-Identifier: Apache-2.0
// zarnnetctl port, ping, lookup, wake, card1, rename: ports in use, other hosts, the primary
// interface, the name of a port.
#include <array>
#include <charconv>
#include <netinet/ether.h>

#include "commands.h"
#include "interfaces.h"
#include "plan.h"
#include "query.h"
#include "typed_address.h"
#include "wish.h"

namespace tool {
namespace {

constexpr std::size_t kLongestAddress = 64;

// ---- port

struct Range {
  int first = 1;
  int last = 65535;
};

int ToPort(const std::string& text) {
  int port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port < 1 || port > 65535)
    throw WrongUsage("PORT", "give a port of 1 to 65535, or FIRST-LAST");
  return port;
}

Range ToRange(const std::string& text) {
  if (text.empty()) return {};
  const std::size_t dash = text.find('-');
  const int first = ToPort(text.substr(0, dash));
  const int last = dash == std::string::npos ? first : ToPort(text.substr(dash + 1));
  if (last < first) throw WrongUsage("PORT", "the first port is above the last");
  return {first, last};
}

std::vector<int> UsedPorts(const std::string& what, const Range& range, const std::string& proto) {
  std::vector<int> ports(static_cast<std::size_t>(range.last - range.first + 1));
  ForgetErrors();
  const int count = ZARNNetGetPortUsedInRange(range.first, range.last, proto.c_str(), ports.data(),
                                              static_cast<int>(ports.size()));
  if (count < 0) Fail(what);
  ports.resize(static_cast<std::size_t>(count));
  return ports;
}

void ShowPorts(const Context& context, const std::string& text, const std::string& proto) {
  const std::vector<int> ports = UsedPorts("cannot read the ports", ToRange(text), proto);
  if (context.json) {
    return PrintJson("ports", {{"protocol", TextOrNull(proto)}, {"used", ports}});
  }
  std::vector<Row> rows;
  rows.reserve(ports.size());
  for (const int port : ports)
    rows.push_back({{std::to_string(port)}});
  PrintTable(rows);
}

void AddPort(const Group& app, Context& context) {
  const Verb verb = AddVerb(app, context, "port", "Shows the local ports that are taken",
                            "  zarnnetctl port\n  zarnnetctl port 5000-5010 --proto tcp");
  auto range = std::make_shared<std::string>();
  auto proto = std::make_shared<std::string>();
  verb.AddOption("PORT", *range, "A port, or FIRST-LAST (default: all)");
  verb.AddOption("--proto", *proto, "tcp or udp (default: both)").OneOf({"tcp", "udp"});
  verb.Run([&context, range, proto] { ShowPorts(context, *range, *proto); });
}

// ---- ping

void Ping(const Context& context, const std::string& host, int seconds) {
  const std::string what = "no answer from " + host;
  ForgetErrors();
  if (BlKOPAIsConnected(host.c_str(), seconds) != 1) {
    const Code code = KOPACErrGet();
    if (code != 0) Fail(what);
    throw Failure(what, std::nullopt, "waited " + std::to_string(seconds) + " seconds");
  }
  if (context.json) return PrintJson("ping", {{"host", host}, {"connected", true}});
  PrintTable({{{host}, {"answers", Tone::kGood}}});
}

void AddPing(const Group& app, Context& context) {
  const Verb verb = AddVerb(app, context, "ping", "Asks whether a host answers",
                            "  zarnnetctl ping 192.168.50.1 --timeout 2");
  auto host = std::make_shared<std::string>();
  auto seconds = std::make_shared<int>(5);
  verb.AddOption("HOST", *host, "Name or address, IPv4 or IPv6").Required();
  verb.AddOption("--timeout", *seconds, "Seconds to wait (default: 5)").Within(1, 3600);
  verb.Run([&context, host, seconds] { Ping(context, *host, *seconds); });
}

// ---- lookup

// The interface that has the address; empty for another machine's.
std::string OwnerOf(const std::string& address) {
  std::array<char, 16> ifname{};
  const int found = ZARNNetIP2If(address.c_str(), ifname.data(), int{ifname.size()});
  return found == 0 ? ifname.data() : "";
}

void Lookup(const Context& context, const std::string& name) {
  std::array<char, kLongestAddress> address{};
  ForgetErrors();
  if (ZARNNetLookupIP(name.c_str(), address.data(), int{address.size()}) < 0)
    Fail("cannot look up " + name);
  const std::string owner = OwnerOf(address.data());
  if (context.json) {
    return PrintJson("lookup",
                     {{"name", name}, {"addr", address.data()}, {"interface", TextOrNull(owner)}});
  }
  PrintTable({{{"address"}, {address.data()}}, {{"interface"}, {owner}}});
}

void AddLookup(const Group& app, Context& context) {
  const Verb verb =
      AddVerb(app, context, "lookup",
              "Shows the address of a host, and which interface of this machine has it",
              "  zarnnetctl lookup nas.local\n  zarnnetctl lookup 192.168.50.10");
  auto name = std::make_shared<std::string>();
  verb.AddOption("HOST", *name, "Name or address").Required();
  verb.Run([&context, name] { Lookup(context, *name); });
}

// ---- wake

void Wake(const Context& context, const std::string& ifname, const std::string& mac) {
  const std::string what = "cannot wake " + mac;
  RequireRoot(what);
  RequireInterface(what, ifname);
  ether_addr address{};
  if (::ether_aton_r(mac.c_str(), &address) == nullptr)
    throw WrongUsage("MAC", "'" + mac + "' is not an address such as 02:00:00:00:02:00");
  ForgetErrors();
  if (KOPANetEtherWake(ifname.c_str(), mac.c_str()) < 0) Fail(what);
  if (context.json) PrintJson("wake", {{"interface", ifname}, {"mac", mac}});
}

void AddWake(const Group& app, Context& context) {
  const Verb verb =
      AddVerb(app, context, "wake", "Wakes a machine of the local network by its MAC address",
              "  zarnnetctl wake eth0 02:00:00:00:02:00");
  const auto ifname = AddIfname(verb);
  auto mac = std::make_shared<std::string>();
  verb.AddOption("MAC", *mac, "Its address").Required();
  verb.Run([&context, ifname, mac] { Wake(context, *ifname, *mac); });
}

// ---- card1

// The library's reader takes a lock that is root's. Another user sees the same in the kernel, but
// not which device of Open vSwitch stands for a port: then there is no answer.
std::string PrimaryAsSeen() {
  constexpr int kMostLayers = 8;
  const auto all = ReadInterfaces();
  const auto port = std::find_if(all.begin(), all.end(), [](const Interface& interface) {
    return interface.name.starts_with("eth") && interface.name.find('.') == std::string::npos;
  });
  std::string ifname = port == all.end() ? "" : port->name;
  for (int i = 0; !ifname.empty() && i < kMostLayers; ++i) {
    const std::string master = MasterOf(ifname);
    if (master.empty()) break;
    ifname = master.starts_with("ovs-") ? "" : master;
  }
  return ifname;
}

// What the interface's file says may lack an address; the interface is the primary one all the
// same.
std::string PrimaryName(const std::string& what) {
  ZARNNETIFADDR config{};
  ForgetErrors();
  if (ZARNNetGetCard1(&config) == 0) return config.szName;
  const std::string seen = IsRootsLock() ? PrimaryAsSeen() : "";
  if (seen.empty()) Fail(what);
  return seen;
}

Json CardJson(const std::string& ifname) {
  return {{"name", ifname},
          {"live", ToJson(LiveAddress(ifname))},
          {"config", ToJson(ReadConfiguration(ifname))}};
}

void GetCard(const Context& context) {
  const std::string what = "cannot read the primary interface";
  const std::string ifname = PrimaryName(what);
  if (context.json) return PrintJson("card1", CardJson(ifname));
  PrintTable({{{"interface"}, {ifname}},
              {{"live"}, {AddressText(LiveAddress(ifname))}},
              {{"configured"}, {ConfigurationText(ReadConfiguration(ifname))}}});
}

void SetCard(Context& context, const std::string& address, const std::string& mask) {
  const std::string what = "cannot set the primary interface";
  const Json ipv4 = Ipv4Wish(address, mask);
  RequireRoot(what);
  Json wish;
  wish["interfaces"][PrimaryName(what)]["ipv4"] = ipv4;
  MakeChange(context, wish);
}

void AddCard(const Group& app, Context& context) {
  const Group group =
      AddGroup(app, "card1", "Reads and sets the primary interface: the first port or its cover");
  const Verb get = AddVerb(group, context, "get", "Shows which it is, and its addresses",
                           "  zarnnetctl card1 get");
  get.Run([&context] { GetCard(context); });
  const Verb set = AddChange(group, context, "set", "Gives it a fixed address, or DHCP",
                             "  zarnnetctl card1 set 192.168.50.10/24\n"
                             "  zarnnetctl card1 set dhcp");
  auto address = std::make_shared<std::string>();
  auto mask = std::make_shared<std::string>();
  set.AddOption("ADDRESS", *address, "ADDRESS/PREFIX, ADDRESS with a NETMASK, or dhcp").Required();
  set.AddOption("NETMASK", *mask, "Dotted netmask");
  set.Run([&context, address, mask] { SetCard(context, *address, *mask); });
}

// ---- rename

void Rename(Context& context, const std::string& ifname, const std::string& newName) {
  const std::string what = "cannot rename " + ifname;
  if (newName.empty() || newName.size() > 15 || newName.find_first_of("/%:. ") != newName.npos)
    throw WrongUsage("NEWNAME", "give 1 to 15 characters, none of / % : . and no blank");
  RequireRootToAct(context, what);
  RequireInterface(what, ifname);
  if (context.change.plan) return ShowPlan(context, {{"ZARNNetRenameEth", ifname, newName}});
  ForgetErrors();
  if (ZARNNetRenameEth(ifname.c_str(), newName.c_str()) < 0) Fail(what);
  if (!KernelHas(newName))
    throw Failure(what, std::nullopt, "the kernel has no " + newName, kOtherwise);
  if (context.json) PrintJson("rename", {{"old", ifname}, {"name", newName}});
}

void AddRename(const Group& app, Context& context) {
  const Verb verb =
      AddAct(app, context, "rename", "Gives a port another name, now and for the next boot",
             "  zarnnetctl rename eth3 lan3");
  const auto ifname = AddIfname(verb);
  auto newName = std::make_shared<std::string>();
  verb.AddOption("NEWNAME", *newName, "At most 15 characters, none of / % : .").Required();
  verb.Run([&context, ifname, newName] { Rename(context, *ifname, *newName); });
}

}  // namespace

void AddNetCommands(const Group& app, Context& context) {
  AddPort(app, context);
  AddPing(app, context);
  AddLookup(app, context);
  AddWake(app, context);
  AddCard(app, context);
  AddRename(app, context);
}

}  // namespace tool
