// SPDX-License-Identifier: Apache-2.0
// zarnnetctl ip: the addresses of an interface, read, set and flushed.
#include <algorithm>
#include <array>

#include "commands.h"
#include "network_lock.h"
#include "plan.h"
#include "query.h"
#include "typed_address.h"
#include "wish.h"

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

struct Wanted {
  std::string ifname;
  std::string address;
  std::vector<std::string> settings;
};

// NETMASK, gateway ADDRESS and dns ADDRESS...: the address, and what is to change with it.
Json WishOf(const Wanted& wanted) {
  Json wish;
  std::string mask;
  std::string word;
  for (const std::string& text : wanted.settings) {
    if (text == "gateway" || text == "dns") {
      word = text;
    } else if (word == "gateway") {
      if (wish.contains("routes")) throw WrongUsage("gateway", "give one address");
      wish["routes"]["gateway"] = text;
    } else if (word == "dns") {
      wish["dns"]["servers"].push_back(text);
    } else if (mask.empty()) {
      mask = text;
    } else {
      throw WrongUsage("'" + text + "'", "behind the address come gateway ADDRESS, dns ADDRESS...");
    }
  }
  if (!word.empty() && (wanted.settings.back() == word))
    throw WrongUsage(word, "an address is missing behind it");
  wish["interfaces"][wanted.ifname]["ipv4"] = Ipv4Wish(wanted.address, mask);
  return wish;
}

// ---- ip flush

void FlushIpv4(const std::string& what, const std::string& ifname) {
  ForgetErrors();
  if (ZARNNetFlushIP("-4", ifname.c_str()) < 0) Fail(what);
  const std::string left = LiveAddress(ifname).ip;
  if (!left.empty()) throw Failure(what, std::nullopt, left + " is still there", kOtherwise);
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
    throw Failure(what, std::nullopt, std::string(address.szAddr) + " is still there", kOtherwise);
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

void PlanFlush(Context& context, const std::string& ifname, const Families& families) {
  std::vector<std::vector<std::string>> calls;
  if (families.ipv4) calls.push_back({"ZARNNetFlushIP", "-4", ifname});
  if (families.ipv6 && !ReadIpv6(ifname).empty()) calls.push_back({"ZARNNetFlushIP", "-6", ifname});
  ShowPlan(context, calls);
}

void Flush(Context& context, const std::string& ifname, const Families& families) {
  const std::string what = "cannot flush the addresses of " + ifname;
  RequireRootToAct(context, what);
  RequireInterface(what, ifname);
  const bool both = families.ipv4 == families.ipv6;
  if (context.change.plan)
    return PlanFlush(context, ifname, {both || families.ipv4, both || families.ipv6});
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
  const Verb verb = AddChange(
      group, context, "set", "Gives an interface an IPv4 address, now and for the next boot",
      "  zarnnetctl ip set eth0 192.168.50.10/24\n"
      "  zarnnetctl ip set eth0 192.168.50.10 255.255.255.0 gateway 192.168.50.1 dns 1.1.1.1\n"
      "  zarnnetctl ip set eth0 dhcp");
  auto wanted = std::make_shared<Wanted>();
  verb.AddOption("IFNAME", wanted->ifname, "Name of the interface").Required().Interface();
  verb.AddOption("ADDRESS", wanted->address, "ADDRESS/PREFIX, the address alone, or dhcp")
      .Required();
  verb.AddOption("SETTING", wanted->settings,
                 "Dotted netmask of an address alone; gateway ADDRESS; dns ADDRESS...");
  verb.Run([&context, wanted] { MakeChange(context, WishOf(*wanted)); });
}

void AddFlush(const Group& group, Context& context) {
  const Verb verb =
      AddAct(group, context, "flush", "Removes the addresses from the running system; files stay",
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
