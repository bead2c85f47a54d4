// SPDX-License-Identifier: Apache-2.0
// Interfaces: addresses of both families, MTU, state and block flags.
#include <algorithm>
#include <arpa/inet.h>
#include <sys/socket.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/ipv6.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "record/programs.h"

namespace change {
namespace {

namespace keys = frame::keys;
using frame::paths::Ifcfg;

constexpr char kTunnel[] = "tun";  // its file is the tunnel's settings, not an interface's

// The words of IPV6INIT, by their ZARNNET_IPV6_... numbers.
const std::vector<std::string> kIpv6Methods{"auto", "off", "dhcp", "static", "auto_dhcp"};

struct Block {
  const char* word;
  unsigned flag;
};
constexpr Block kBlocks[] = {{"ha", ZARNNET_BLOCK_HA},
                             {"aha", ZARNNET_BLOCK_AHA},
                             {"virtual", ZARNNET_BLOCK_VIRTUAL},
                             {"quendar", ZARNNET_BLOCK_QUENDAR}};

// ---- the shape

Shape Ipv4Shape() {
  return Object(
      "IPv4",
      {{"method",
        Word("A fixed address, one of a DHCP server, or none", {"static", "dhcp", "none"}).Both()},
       {"address", Text("The address", Format::kIpv4, 15).Both()},
       {"prefix", Number("Length of the subnet's prefix, in bits", 1, 32).Both()},
       {"netmask", Text("In a wish: the prefix as a dotted netmask", Format::kIpv4Mask, 15)}});
}

Shape Ipv6Shape() {
  return Object(
      "IPv6",
      {{"method", Word("Router advertisements (auto), none (off), DHCPv6 (dhcp), a fixed address "
                       "(static), or advertisements and DHCPv6 (auto_dhcp)",
                       kIpv6Methods)},
       {"address", Text("The fixed address", Format::kIpv6, 45).Both()},
       {"prefix", Number("Length of its prefix, in bits", 1, 128).Both()},
       {"gateway", Text("The default gateway over this interface", Format::kIpv6, 45)}});
}

Shape LinkShape() {
  return Object("What the kernel tells of the interface",
                {{"kind", Text("bridge, bond, vlan ..., or port", Format::kAny, 31).ReadOnly()},
                 {"mac", Text("Hardware address", Format::kAny, 17).ReadOnly()},
                 {"carrier", Flag("Is there a partner on the cable").ReadOnly()},
                 {"speed", Number("Speed in Mb/s", 0, 10000000).ReadOnly()},
                 {"full_duplex", Flag("Are both directions used at once").ReadOnly()},
                 {"autonegotiation", Flag("Is the speed agreed on with the partner").ReadOnly()},
                 {"master", Text("Its bond or bridge", Format::kIfname, 15).ReadOnly()},
                 {"addresses", List("All addresses of both families, with their prefixes",
                                    Text("ADDRESS/PREFIX", Format::kAny, 49).ReadOnly())
                                   .ReadOnly()}})
      .ReadOnly();
}

Shape ShapeOf() {
  std::vector<std::string> blocks;
  for (const Block& block : kBlocks)
    blocks.emplace_back(block.word);
  return Map(
      Format::kIfname, "Interfaces by name: ports, bonds, bridges and VLANs",
      Object(
          "One interface",
          {{"up", Flag("Brought up; not stored").Kernel()},
           {"on_boot", Flag("Brought up when the machine starts")},
           {"ipv4", Ipv4Shape()},
           {"ipv6", Ipv6Shape()},
           {"mtu", Number("Largest packet, in bytes", 68, 65535).Both()},
           {"block",
            List("Who keeps the interface for itself", Word("Who", std::move(blocks))).Unordered()},
           {"link", LinkShape()}}));
}

// ---- read from files

bool IsMember(const std::string& path, std::string* unread) {
  return !KeyOf(path, keys::kBridge, unread).empty() || !KeyOf(path, keys::kMaster, unread).empty();
}

Json ConfiguredIpv4(const std::string& path, std::string* unread) {
  const std::string method = KeyOf(path, keys::kBootProto, unread);
  if (method == frame::model::kDhcp) return {{"method", "dhcp"}};
  if (method != frame::model::kStatic) return {{"method", "none"}};
  Json ipv4{{"method", "static"}};
  Put(&ipv4, "address", KeyOf(path, keys::kIpAddr, unread));
  if (const long prefix = PrefixOf(KeyOf(path, keys::kNetmask, unread))) ipv4["prefix"] = prefix;
  return ipv4;
}

Json ConfiguredIpv6(const std::string& path, std::string* unread) {
  const std::string method = KeyOf(path, keys::kIpv6Type, unread);
  if (std::find(kIpv6Methods.begin(), kIpv6Methods.end(), method) == kIpv6Methods.end())
    return nullptr;
  Json ipv6{{"method", method}};
  if (method != "static") return ipv6;
  Put(&ipv6, "address", KeyOf(path, keys::kIpv6Address, unread));
  const std::string prefix = KeyOf(path, keys::kIpv6Prefix, unread);
  if (Fits(prefix, Format::kNumber)) ipv6["prefix"] = std::stol(prefix);
  Put(&ipv6, "gateway", KeyOf(path, keys::kIpv6Gateway, unread));
  return ipv6;
}

Json ConfiguredBlocks(const std::string& ifname) {
  const int flags = ZARNNetIFBlockGet(ifname.c_str());
  Json words = Json::array();
  for (const Block& block : kBlocks) {
    if (flags > 0 && (static_cast<unsigned>(flags) & block.flag) != 0) words.push_back(block.word);
  }
  return words.empty() ? Json() : words;
}

Json ConfiguredInterface(const std::string& ifname, std::string* unread) {
  Json interface = Json::object();
  char mtu[8] = "";
  if (ZARNConfGetMTUValue(ifname.c_str(), mtu, sizeof mtu) == 0 && Fits(mtu, Format::kNumber))
    interface["mtu"] = std::stol(mtu);
  const std::string path = Ifcfg(ifname);
  if (!IsFile(path)) return interface;
  interface["on_boot"] = KeyOf(path, keys::kOnBoot, unread) == "yes";
  if (!IsMember(path, unread)) interface["ipv4"] = ConfiguredIpv4(path, unread);
  Put(&interface, "ipv6", ConfiguredIpv6(path, unread));
  Put(&interface, "block", ConfiguredBlocks(ifname));
  return interface;
}

Json Configured(const View& view) {
  std::set<std::string> names;
  for (const auto& [name, link] : view.kernel.links) {
    if (!link.IsLoopback() && name != kTunnel) names.insert(name);
  }
  for (const std::string& name : ConfiguredInterfaces(view.unread)) {
    if (Fits(name, Format::kIfname) && name != kTunnel && name != "lo") names.insert(name);
  }
  Json interfaces = Json::object();
  for (const std::string& name : names)
    interfaces[name] = ConfiguredInterface(name, view.unread);
  return interfaces;
}

// ---- read from the kernel

// The configured address where it is there, otherwise the first that somebody has set.
const KernelAddress* AddressOf(const KernelLink& link, int family, const std::string& configured) {
  const KernelAddress* first = nullptr;
  for (const KernelAddress& address : link.addresses) {
    if (address.family != family) continue;
    if (address.text == configured) return &address;
    if (first == nullptr && !address.IsAutomatic()) first = &address;
  }
  return first;
}

void PutAddress(const KernelLink& link, int family, const std::string& configured, Json* object) {
  const KernelAddress* const address = AddressOf(link, family, configured);
  if (address == nullptr) return;
  (*object)["address"] = address->text;
  (*object)["prefix"] = address->prefix;
}

Json LiveLink(const KernelLink& link) {
  Json json{{"kind", link.kind.empty() ? "port" : link.kind}, {"carrier", link.carrier}};
  Put(&json, "mac", link.mac);
  Put(&json, "master", link.master);
  ZARNNETETHINFO info{};
  if (ZARNNetGetEthInfo(link.name.c_str(), &info) == 0) {
    if (info.speed >= 0) json["speed"] = info.speed;
    if (info.duplex >= 0) json["full_duplex"] = info.duplex == 1;
    if (info.autoneg >= 0) json["autonegotiation"] = info.autoneg == 1;
  }
  json["addresses"] = Json::array();
  for (const KernelAddress& address : link.addresses)
    json["addresses"].push_back(address.WithPrefix());
  return json;
}

Json LiveInterface(const View& view, const KernelLink& link, const Json& configured) {
  Json json{{"up", link.IsUp()}, {"mtu", link.mtu}, {"link", LiveLink(link)}};
  Json ipv4 = Json::object();
  PutAddress(link, AF_INET, TextOf(Member(Member(configured, "ipv4"), "address")), &ipv4);
  const bool leased = view.dhcpClients.contains(link.name);
  ipv4["method"] = leased ? "dhcp" : ipv4.contains("address") ? "static" : "none";
  json["ipv4"] = ipv4;
  Json ipv6 = Json::object();
  PutAddress(link, AF_INET6, TextOf(Member(Member(configured, "ipv6"), "address")), &ipv6);
  if (!ipv6.empty()) json["ipv6"] = ipv6;
  return json;
}

Json Live(const View& view, const Json& configured) {
  Json interfaces = Json::object();
  for (const auto& [name, link] : view.kernel.links) {
    if (!link.IsLoopback() && name != kTunnel)
      interfaces[name] = LiveInterface(view, link, Member(configured, name));
  }
  return interfaces;
}

// ---- what follows from a wish

void Complain(const Path& path, const char* sentence, Findings* findings) {
  findings->Add("interface", path, Severity::kUsage, sentence);
}

bool SettleMask(const Path& path, Json* wish, Findings* findings) {
  if (!wish->contains("netmask")) return true;
  if (!Member(*wish, "prefix").is_null()) {
    Complain(path / "netmask", "give a prefix or a netmask, not both", findings);
    return false;
  }
  const std::string mask = TextOf((*wish)["netmask"]);
  const long prefix = PrefixOf(mask);
  wish->erase("netmask");
  if (prefix != 0) (*wish)["prefix"] = prefix;
  if (prefix != 0) return true;
  findings->Add("netmask", path / "netmask", Severity::kRefused,
                "'" + mask +
                    "' is no netmask: it has no ones, or holes between them; give \"prefix\": 24 "
                    "or a mask such as 255.255.255.0");
  return false;
}

// The address belongs to the method static and goes with it.
void SettleMethod(const Path& path, Json* wish, Json* wanted, Findings* findings) {
  const bool named = !Member(*wish, "address").is_null() || !Member(*wish, "prefix").is_null();
  if (named && !wish->contains("method")) (*wish)["method"] = "static";
  wanted->merge_patch(*wish);
  wanted->erase("netmask");
  if (TextOf(Member(*wanted, "method")) == "static") {
    if (!wanted->contains("address"))
      Complain(path / "address", "a fixed address is wanted: name it", findings);
    if (!wanted->contains("prefix"))
      Complain(path / "prefix", "the length of the subnet's prefix is missing: name it", findings);
    return;
  }
  if (named)
    Complain(path, "an address belongs to the method static: leave out one of the two", findings);
  // Without a fixed one there is the address that is learned.
  const bool learns = TextOf(Member(*wanted, "method")) != "none";
  for (const char* field : {"address", "prefix"}) {
    if (learns && wish->contains(field)) wish->erase(field);
  }
  for (const char* field : {"address", "prefix", "gateway"})
    wanted->erase(field);
}

void SettleFamily(const Path& path, const char* none, Change* change, Findings* findings) {
  if (!change->wish.contains(path)) return;
  Json& wish = change->wish[path];
  if (wish.is_null()) wish = {{"method", none}};
  if (!SettleMask(path, &wish, findings)) return;
  Json wanted = At(change->before, path);
  if (!wanted.is_object()) wanted = Json::object();
  SettleMethod(path, &wish, &wanted, findings);
  change->wanted[path] = wanted;
}

void SettleInterface(const std::string& ifname, Change* change, Findings* findings) {
  const Path path = "interfaces" / ifname;
  if (At(change->wish, path).is_null()) {
    // What makes the interface takes its settings away with it.
    for (const char* section : {"bonds", "bridges", "vlans"}) {
      if (Member(change->wish, section).contains(ifname)) return;
    }
    return Complain(path, "a port cannot be removed; null is for bonds, bridges and vlans",
                    findings);
  }
  // Who joins has no IPv4 of its own, and nothing says so in its file.
  if (change->BecomesMember(ifname) && At(change->wish, path / "ipv4").is_null())
    change->wish[path].erase("ipv4");
  SettleFamily(path / "ipv4", "none", change, findings);
  SettleFamily(path / "ipv6", "off", change, findings);
  const Path mtu = path / "mtu";
  if (change->wish.contains(mtu) && At(change->wish, mtu).is_null())
    change->wish[mtu] = change->wanted[mtu] = 1500;
  for (const char* field : {"up", "on_boot"}) {
    if (change->wish.contains(path / field) && At(change->wish, path / field).is_null())
      Complain(path / field, "this cannot be removed: give a value", findings);
  }
}

void Settle(Change* change, Findings* findings) {
  for (const std::string& ifname : change->NamedIn(Path("/interfaces")))
    SettleInterface(ifname, change, findings);
}

// ---- steps

bool SetMethod(const std::string& ifname, const char* method) {
  return EditKeys(Ifcfg(ifname),
                  {{keys::kDevice, ifname}, {keys::kOnBoot, "yes"}, {keys::kBootProto, method}},
                  {keys::kIpAddr, keys::kNetmask});
}

bool UseDhcp(const std::string& ifname) {
  ZARNNETIFADDR card{};
  if (ZARNNetGetCard1(&card) == 0 && ifname == card.szName) {
    card.bootProto = 0;
    // The fixed address would stay beside the leased one, or for ever where nobody leases any.
    return ZARNNetFlushIP("-4", ifname.c_str()) == 0 && ZARNNetSetCard1(&card) == 0;
  }
  if (!SetMethod(ifname, frame::model::kDhcp)) return false;
  static_cast<void>(StopDhcpClient(ifname));  // one may run, or not
  return ZARNNetFlushIP("-4", ifname.c_str()) == 0 && KOPANetIfUp(ifname.c_str()) == 1 &&
         StartDhcpClient(ifname);
}

bool UseNoAddress(const std::string& ifname) {
  if (!SetMethod(ifname, frame::model::kNoAddress)) return false;
  static_cast<void>(StopDhcpClient(ifname));
  return ZARNNetFlushIP("-4", ifname.c_str()) == 0;
}

// A VLAN or bridge that the same change makes is made with its address.
bool IsMadeWithAddress(const Change& change, const std::string& ifname) {
  for (const char* section : {"bridges", "vlans"}) {
    if (Member(Member(change.wanted, section), ifname).is_object() &&
        Member(Member(change.before, section), ifname).is_null()) {
      return true;
    }
  }
  return false;
}

// A bond that is made anew has what its first slave's file says. That is its own while the first
// slave is the same, but for no address at all, which the setter takes for a lease.
bool IsMadeWithAnothers(const Change& change, const std::string& ifname) {
  const Path path = "bonds" / ifname;
  const auto before = TextsOf(At(change.before, path / "slaves"));
  const auto slaves = TextsOf(At(change.wanted, path / "slaves"));
  if (before.empty() || slaves.empty() || !change.Concerns(path)) return false;
  const Json& method = At(change.wanted, "interfaces" / ifname / "ipv4" / "method");
  return slaves.front() != before.front() || TextOf(method) == frame::model::kNoAddress;
}

// A VLAN that goes leaves its addresses to its parent, a bond to a slave, and no address becomes a
// lease there. What is wished for these comes behind it, also where it is as before.
bool IsLeftWithAnothers(const Change& change, const std::string& ifname, const Path& path) {
  if (!change.wish.contains(path) || change.IsMadeOf(ifname)) return false;
  if (change.LosesVlan(ifname)) return true;
  for (const auto& [bond, inner] : Member(change.before, "bonds").items()) {
    if (Has(TextsOf(Member(inner, "slaves")), ifname)) return true;
  }
  return false;
}

void PlanIpv4(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = "interfaces" / ifname / "ipv4";
  const Json& ipv4 = At(change.wanted, path);
  const std::string method = TextOf(Member(ipv4, "method"));
  // What is made without a fixed address asks for a lease.
  const bool made = IsMadeWithAddress(change, ifname) && method != "none";
  if (made || (!change.Concerns(path) && !IsMadeWithAnothers(change, ifname) &&
               !IsLeftWithAnothers(change, ifname, path)))
    return;
  const std::string file = Ifcfg(ifname);
  if (method == "static") {
    const std::string address = TextOf(ipv4["address"]);
    const long prefix = NumberOf(ipv4["prefix"]);
    steps->push_back({Phase::kAddress,
                      path,
                      "give " + ifname + " the address " + Cidr(address, prefix),
                      "ZARNILnxSetIPNetmask",
                      {file, frame::paths::kIp, frame::paths::kIfconfig},
                      [=] {
                        return ZARNILnxSetIPNetmask(ifname.c_str(), address.c_str(),
                                                    MaskOf(prefix).c_str()) == 0;
                      }});
  } else if (method == "dhcp") {
    steps->push_back({Phase::kAddress,
                      path,
                      "let a DHCP server give " + ifname + " its address",
                      "ZARNNetSetCard1 or ZARNNetFlushIP and the job dhcp-client",
                      {file, frame::paths::kStart},
                      [ifname] { return UseDhcp(ifname); }});
  } else {
    steps->push_back({Phase::kAddress,
                      path,
                      "take the address of " + ifname,
                      "ZARNNetFlushIP",
                      {file, frame::paths::kIp, frame::paths::kStop},
                      [ifname] { return UseNoAddress(ifname); }});
  }
}

void PlanIpv6(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = "interfaces" / ifname / "ipv6";
  if (!change.Concerns(path) && !IsLeftWithAnothers(change, ifname, path)) return;
  const Json ipv6 = At(change.wanted, path);
  const std::string method = TextOf(Member(ipv6, "method"));
  const auto type =
      std::find(kIpv6Methods.begin(), kIpv6Methods.end(), method) - kIpv6Methods.begin();
  steps->push_back({Phase::kAddress,
                    path,
                    "set IPv6 of " + ifname + " to " + method,
                    "ZARNNetIPv6ConfSet",
                    {Ifcfg(ifname), frame::paths::kIp, frame::paths::kStart},
                    [=] {
                      const std::string address = TextOf(Member(ipv6, "address"));
                      const std::string gateway = TextOf(Member(ipv6, "gateway"));
                      const long prefix = NumberOf(Member(ipv6, "prefix"), 64);
                      return ZARNNetIPv6ConfSet(ifname.c_str(), static_cast<int>(type),
                                                address.c_str(), static_cast<int>(prefix),
                                                gateway.c_str()) == 0;
                    }});
}

void PlanMtu(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = "interfaces" / ifname / "mtu";
  if (!change.Concerns(path)) return;
  const std::string mtu = std::to_string(NumberOf(At(change.wanted, path)));
  steps->push_back({Phase::kMtu,
                    path,
                    "give " + ifname + " the MTU " + mtu,
                    "ZARNNetSetMTUValue",
                    {frame::paths::kInfo},
                    [=] { return ZARNNetSetMTUValue(mtu.c_str(), ifname.c_str()) == 0; }});
}

void PlanLink(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = "interfaces" / ifname;
  if (change.Restarts(path)) {
    steps->push_back({Phase::kLink,
                      path,
                      "start " + ifname + " anew",
                      "the start script",
                      {frame::paths::kNetworkScript},
                      [ifname] {
                        // A stop of what is down may fail.
                        static_cast<void>(RunStartScript("stop", {ifname}));
                        return RunStartScript("start", {ifname});
                      }});
  }
  const bool goes = !At(change.wanted, path).is_object();
  if (goes || !change.Concerns(path / "up")) return;
  const bool up = IsTrue(At(change.wanted, path / "up"));
  steps->push_back(
      {Phase::kLink,
       path / "up",
       (up ? "bring up " : "take down ") + ifname,
       up ? "KOPANetIfUp" : "KOPANetIfDown",
       {},
       [=] { return (up ? KOPANetIfUp(ifname.c_str()) : KOPANetIfDown(ifname.c_str())) == 1; }});
}

unsigned FlagsOf(const std::vector<std::string>& words) {
  unsigned flags = 0;
  for (const Block& block : kBlocks) {
    if (Has(words, block.word)) flags |= block.flag;
  }
  return flags;
}

// Does a bond, bridge or VLAN of this change have it as its name or member?
bool IsRebuilt(const Change& change, const std::string& ifname) {
  for (const char* section : {"bonds", "bridges", "vlans"}) {
    for (const Json* document : {&change.before, &change.wanted}) {
      const Json& things = Member(*document, section);
      if (!things.is_object()) continue;
      for (const auto& [name, thing] : things.items()) {
        auto parts = TextsOf(Member(thing, "slaves"));
        for (const std::string& port : TextsOf(Member(thing, "ports")))
          parts.push_back(port);
        parts.push_back(name);
        if (Has(parts, ifname) && change.Concerns(section / name)) return true;
      }
    }
  }
  return false;
}

// The setters of addresses, bonds and bridges note that the interface starts with the machine. What
// is wished otherwise, or was said otherwise and is not named, is noted behind them.
bool IsKeptFromStarting(const Change& change, const std::string& ifname) {
  const Path path = "interfaces" / ifname;
  const Json& wished = At(change.wish, path / "on_boot");
  const bool off =
      wished.is_boolean() ? !IsTrue(wished) : KeyOf(Ifcfg(ifname), keys::kOnBoot) == "no";
  return off && At(change.wanted, path).is_object() &&
         (change.Concerns(path / "ipv4") || change.Concerns(path / "ipv6") ||
          IsRebuilt(change, ifname));
}

void PlanFile(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = "interfaces" / ifname;
  if (change.Concerns(path / "on_boot") || IsKeptFromStarting(change, ifname)) {
    const std::string value = IsTrue(At(change.wanted, path / "on_boot")) ? "yes" : "no";
    steps->push_back(
        {Phase::kSettings,
         path / "on_boot",
         "note whether " + ifname + " starts with the machine",
         "KOPACFileSetKeys",
         {Ifcfg(ifname)},
         [=] {
           return EditKeys(Ifcfg(ifname), {{keys::kDevice, ifname}, {keys::kOnBoot, value}}, {});
         }});
  }
  if (!change.Concerns(path / "block")) return;
  const unsigned wanted = FlagsOf(TextsOf(At(change.wanted, path / "block")));
  steps->push_back({Phase::kSettings,
                    path / "block",
                    "set the block flags of " + ifname,
                    "ZARNNetIFBlockSet",
                    {Ifcfg(ifname)},
                    [=] {
                      constexpr unsigned kAll = 15;
                      return ZARNNetIFBlockSet(ifname.c_str(), kAll & ~wanted, 0) == 0 &&
                             (wanted == 0 || ZARNNetIFBlockSet(ifname.c_str(), wanted, 1) == 0);
                    }});
}

void PlanInterface(const Change& change, const std::string& ifname, Steps* steps) {
  PlanLink(change, ifname, steps);
  if (!At(change.wanted, "interfaces" / ifname).is_object()) return;
  PlanMtu(change, ifname, steps);
  PlanIpv4(change, ifname, steps);
  PlanIpv6(change, ifname, steps);
  PlanFile(change, ifname, steps);
}

void Plan(const Change& change, Steps* steps) {
  std::set<std::string> names;
  for (const std::string& name : change.NamedIn(Path("/interfaces")))
    names.insert(name);
  const Json& known = Member(change.before, "interfaces");
  for (const auto& [name, interface] : known.items()) {
    if (IsKeptFromStarting(change, name) || IsMadeWithAnothers(change, name)) names.insert(name);
  }
  for (const Path& path : change.options.restart) {
    const std::string name = path.empty() ? "" : path.back();
    if (path == "interfaces" / name) names.insert(name);
  }
  for (const std::string& name : names)
    PlanInterface(change, name, steps);
}

// ---- what comes later

void Await(const Change& change, const Json& live, std::vector<Remark>* awaited) {
  for (const std::string& ifname : change.NamedIn(Path("/interfaces"))) {
    const Path path = "interfaces" / ifname;
    const Json& wish = At(change.wish, path);
    const bool leased = TextOf(Member(Member(wish, "ipv4"), "method")) == "dhcp";
    if (leased && At(live, path / "ipv4" / "address").is_null())
      awaited->push_back(
          {path / "ipv4", "a DHCP server has not given " + ifname + " an address yet"});
    const std::string v6 = TextOf(Member(Member(wish, "ipv6"), "method"));
    if ((v6 == "dhcp" || v6.starts_with("auto")) && At(live, path / "ipv6").is_null())
      awaited->push_back({path / "ipv6", ifname + " has not learned an IPv6 address yet"});
  }
}

}  // namespace

const Section kInterfaces{"interfaces", ShapeOf, Configured, Live,
                          Settle,       Plan,    Await,      ReviveNothing};

}  // namespace change
