// SPDX-License-Identifier: Apache-2.0
// zarnnetctl ip: the addresses of an interface, read, set and flushed.
#include <algorithm>
#include <array>

#include "commands.h"
#include "network_lock.h"
#include "query.h"
#include "typed_address.h"

namespace tool {
namespace {

// ---- ip get

Json StateJson(const std::string& ifname) {
  return {{"name", ifname},
          {"live", ToJson(LiveAddress(ifname))},
          {"config", ToJson(ReadConfiguration(ifname))},
          {"ipv6", ToJson(ReadIpv6(ifname))}};
}

void PrintState(const std::string& ifname) {
  std::vector<Row> rows{{{"live"}, {AddressText(LiveAddress(ifname))}},
                        {{"configured"}, {ConfigurationText(ReadConfiguration(ifname))}}};
  for (const ZARNNETV6ADDR& address : ReadIpv6(ifname))
    rows.push_back({{"ipv6"}, {Ipv6Text(address)}});
  PrintTable(rows);
}

void Get(const Context& context, const std::string& ifname) {
  RequireInterface("cannot read the addresses of " + ifname, ifname);
  if (context.json) return PrintJson("ip", StateJson(ifname));
  PrintState(ifname);
}

// ---- ip set

void Set(const Context& context, const std::string& ifname, const Typed& typed) {
  const std::string what = "cannot set the address of " + ifname;
  const Address address = Validate(what, typed);
  RequireRoot(what);
  RequireInterface(what, ifname);
  {
    const NetworkLock lock(what);
    ForgetErrors();
    if (ZARNILnxSetIPNetmask(ifname.c_str(), address.ip.c_str(), address.mask.c_str()) < 0)
      Fail(what);
  }
  if (context.json) PrintJson("ip", StateJson(ifname));
}

// ---- ip flush

void FlushIpv4(const std::string& what, const std::string& ifname) {
  ForgetErrors();
  if (ZARNNetFlushIP("-4", ifname.c_str()) < 0) Fail(what);
}

bool Holds(const std::vector<ZARNNETV6ADDR>& addresses, const ZARNNETV6ADDR& wanted) {
  const std::string text = wanted.szAddr;
  return std::any_of(addresses.begin(), addresses.end(),
                     [&](const ZARNNETV6ADDR& address) { return text == address.szAddr; });
}

// The library passes some kinds of interface over in silence; the link-local address comes back by
// itself.
void CheckIpv6Flushed(const std::string& what, const std::string& ifname,
                      const std::vector<ZARNNETV6ADDR>& before) {
  constexpr std::uint32_t kLinkLocal = 0x20;
  const auto after = ReadIpv6(ifname);
  for (const ZARNNETV6ADDR& address : before) {
    if (address.scope == kLinkLocal || !Holds(after, address)) continue;
    throw Failure(what, std::nullopt, std::string(address.szAddr) + " is still there");
  }
}

// With nothing to drop the switch stays alone: of an interface that is down the library refuses it.
void FlushIpv6(const std::string& what, const std::string& ifname) {
  const auto before = ReadIpv6(ifname);
  if (before.empty()) return;
  ForgetErrors();
  if (ZARNNetFlushIP("-6", ifname.c_str()) < 0) Fail(what);
  CheckIpv6Flushed(what, ifname, before);
}

struct Families {
  bool ipv4 = false;
  bool ipv6 = false;
};

void Flush(const Context& context, const std::string& ifname, const Families& families) {
  const std::string what = "cannot flush the addresses of " + ifname;
  RequireRoot(what);
  RequireInterface(what, ifname);
  const bool both = families.ipv4 == families.ipv6;
  {
    const NetworkLock lock(what);
    if (both || families.ipv4) FlushIpv4(what, ifname);
    if (both || families.ipv6) FlushIpv6(what, ifname);
  }
  if (context.json) PrintJson("ip", StateJson(ifname));
}

// ---- the command line

void AddGet(const Group& group, Context& context) {
  const Verb verb = AddVerb(group, context, "get", "Shows the live and the configured addresses",
                            "  zarnnetctl ip get eth0\n  zarnnetctl ip get eth0 --json");
  const auto ifname = AddIfname(verb);
  verb.Run([&context, ifname] { Get(context, *ifname); });
}

void AddSet(const Group& group, Context& context) {
  const Verb verb = AddVerb(group, context, "set",
                            "Gives an interface a fixed IPv4 address, now and for the next boot",
                            "  zarnnetctl ip set eth0 192.168.50.10/24\n"
                            "  zarnnetctl ip set eth0 192.168.50.10 255.255.255.0");
  const auto ifname = AddIfname(verb);
  auto address = std::make_shared<std::string>();
  auto mask = std::make_shared<std::string>();
  verb.AddOption("ADDRESS", *address, "ADDRESS/PREFIX, or the address alone").Required();
  verb.AddOption("NETMASK", *mask, "Dotted netmask, for an address without a prefix");
  verb.Run(
      [&context, ifname, address, mask] { Set(context, *ifname, TakeApart(*address, *mask)); });
}

void AddFlush(const Group& group, Context& context) {
  const Verb verb =
      AddVerb(group, context, "flush", "Removes the addresses from the running system; files stay",
              "  zarnnetctl ip flush eth0\n  zarnnetctl ip flush eth0 -6");
  const auto ifname = AddIfname(verb);
  auto families = std::make_shared<Families>();
  verb.AddFlag("-4", families->ipv4, "IPv4 alone (default: both)");
  verb.AddFlag("-6", families->ipv6, "IPv6 alone (default: both)");
  verb.Run([&context, ifname, families] { Flush(context, *ifname, *families); });
}

}  // namespace

void AddIpCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "ip", "Reads, sets and flushes addresses");
  AddGet(group, context);
  AddSet(group, context);
  AddFlush(group, context);
}

}  // namespace tool
