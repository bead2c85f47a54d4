// SPDX-License-Identifier: Apache-2.0
// zarnnetctl ipv6: how an interface gets its IPv6 address; single addresses and default routes.
#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cctype>
#include <cstring>
#include <optional>

#include "commands.h"
#include "kernel_routes.h"
#include "network_lock.h"
#include "plan.h"
#include "query.h"
#include "typed_address.h"
#include "wish.h"

namespace tool {
namespace {

// ---- types by name, as the interface's file has them

const std::array<std::string, 5> kTypeNames{"auto", "off", "dhcp", "static", "auto_dhcp"};

std::string TypeText(int type) {
  return kTypeNames.at(static_cast<std::size_t>(type));
}

// ---- addresses with a prefix length, as typed

struct Typed {
  std::string address;
  unsigned prefix = 0;
};

// How it is put is a matter of usage; what it says is judged here, as the library would.
Typed TakeApart(const std::string& what, const std::string& text) {
  const std::size_t slash = text.find('/');
  const std::string digits = slash == std::string::npos ? "" : text.substr(slash + 1);
  const bool isNumber = !digits.empty() && digits.size() <= 3 &&
                        std::all_of(digits.begin(), digits.end(),
                                    [](unsigned char digit) { return std::isdigit(digit) != 0; });
  if (!isNumber) throw WrongUsage("ADDRESS", "give ADDRESS/PREFIX");
  if (BlKOPAIsv6IpAddrValid(text.c_str()) != 1) {
    throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS,
                  "'" + text + "' is not an IPv6 address with a prefix");
  }
  return {text.substr(0, slash), static_cast<unsigned>(std::stoul(digits))};
}

void RequireAddress(const std::string& what, const std::string& address) {
  if (ZARNNetGetAddrType(address.c_str()) == 10) return;
  throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS, "'" + address + "' is not an IPv6 address");
}

// ---- ipv6 get

struct State {
  bool configured = false;
  int type = 0;
  std::string address;
  int prefix = -1;
  std::string gateway;
};

State Read(const std::string& what, const std::string& ifname) {
  std::array<char, 64> address{};
  std::array<char, 64> gateway{};
  State state;
  ForgetErrors();
  const int read =
      ZARNNetIPv6ConfGet(ifname.c_str(), &state.type, address.data(), int{address.size()},
                         &state.prefix, gateway.data(), int{gateway.size()});
  if (read < 0) Fail(what);
  state.configured = read > 0;
  state.address = address.data();
  state.gateway = gateway.data();
  return state;
}

Json StateJson(const std::string& what, const std::string& ifname) {
  const State state = Read(what, ifname);
  return {{"name", ifname},
          {"type", state.configured ? Json(TypeText(state.type)) : Json(nullptr)},
          {"addr", TextOrNull(state.address)},
          {"prefix", state.prefix >= 0 ? Json(state.prefix) : Json(nullptr)},
          {"gateway", TextOrNull(state.gateway)},
          {"live", ToJson(ReadIpv6(ifname))}};
}

void PrintState(const std::string& what, const std::string& ifname) {
  const State state = Read(what, ifname);
  const std::string prefix = state.prefix >= 0 ? "/" + std::to_string(state.prefix) : "";
  std::vector<Row> rows{{{"type"}, {state.configured ? TypeText(state.type) : ""}},
                        {{"address"}, {state.address.empty() ? "" : state.address + prefix}},
                        {{"gateway"}, {state.gateway}}};
  for (const ZARNNETV6ADDR& address : ReadIpv6(ifname))
    rows.push_back({{"live"}, {Ipv6Text(address)}});
  PrintTable(rows);
}

void Get(const Context& context, const std::string& ifname) {
  const std::string what = "cannot read the IPv6 configuration of " + ifname;
  RequireInterface(what, ifname);
  if (context.json) return PrintJson("ipv6", StateJson(what, ifname));
  PrintState(what, ifname);
}

// ---- ipv6 set

struct Wanted {
  std::string ifname;
  std::string type;
  std::string address;  // ADDRESS/PREFIX
  std::string gateway;
};

void Set(Context& context, const Wanted& wanted) {
  const bool isStatic = wanted.type == "static";
  if (isStatic && wanted.address.empty())
    throw WrongUsage("ADDRESS", "static needs ADDRESS/PREFIX");
  if (!isStatic && !(wanted.address.empty() && wanted.gateway.empty()))
    throw WrongUsage("ADDRESS", "an address and a gateway are for static alone");
  Json ipv6{{"method", wanted.type}};
  if (isStatic) {
    ipv6.update(PrefixedAddress(wanted.address));
    ipv6["gateway"] = TextOrNull(wanted.gateway);
  }
  Json wish;
  wish["interfaces"][wanted.ifname]["ipv6"] = ipv6;
  MakeChange(context, wish);
}

// ---- ipv6 add, ipv6 del

enum Command { kAdd = 0, kDelete = 1 };

// The library answers 0 for kinds of interface that it leaves alone.
void RequireEffect(const std::string& what, Command command, const std::string& ifname,
                   const std::string& address) {
  in6_addr wanted{};
  ::inet_pton(AF_INET6, address.c_str(), &wanted);
  const auto now = ReadIpv6(ifname);
  const bool there = std::any_of(now.begin(), now.end(), [&](const ZARNNETV6ADDR& entry) {
    in6_addr found{};
    return ::inet_pton(AF_INET6, entry.szAddr, &found) == 1 &&
           std::memcmp(&found, &wanted, sizeof found) == 0;
  });
  if (there == (command == kAdd)) return;
  throw Failure(what, std::nullopt, address + (there ? " is still there" : " is not there"),
                kOtherwise);
}

void RequireRoute(const std::string& what, Command command, const Wanted& wanted) {
  const bool there = HasIpv6Default(wanted.ifname, wanted.gateway);
  if (there == (command == kAdd)) return;
  const std::string route = "the default route via " + wanted.gateway;
  throw Failure(what, std::nullopt, route + (there ? " is still there" : " is not there"),
                kOtherwise);
}

void Change(Context& context, Command command, const Wanted& wanted) {
  const std::string what =
      (command == kAdd ? "cannot add to " : "cannot delete from ") + wanted.ifname;
  if (wanted.address.empty() == wanted.gateway.empty())
    throw WrongUsage("ADDRESS", "give ADDRESS/PREFIX or --gateway, one of them");
  const Typed typed = wanted.address.empty() ? Typed{} : TakeApart(what, wanted.address);
  if (!wanted.gateway.empty()) RequireAddress(what, wanted.gateway);
  RequireRootToAct(context, what);
  RequireInterface(what, wanted.ifname);
  if (context.change.plan) {
    return ShowPlan(context, {{"ZARNNetIPv6IPAction", std::to_string(command), wanted.ifname,
                               typed.address, std::to_string(typed.prefix), wanted.gateway}});
  }
  {
    const NetworkLock lock(what);
    ForgetErrors();
    const char* const gateway = wanted.gateway.empty() ? nullptr : wanted.gateway.c_str();
    if (ZARNNetIPv6IPAction(command, wanted.ifname.c_str(), typed.address.c_str(), typed.prefix,
                            gateway) != 0) {
      Fail(what);
    }
  }
  if (!typed.address.empty()) RequireEffect(what, command, wanted.ifname, typed.address);
  if (!wanted.gateway.empty()) RequireRoute(what, command, wanted);
  if (context.json) PrintJson("ipv6", StateJson(what, wanted.ifname));
}

// ---- ipv6 init

void Init(Context& context) {
  const std::string what = "cannot set up router advertisements";
  RequireRootToAct(context, what);
  if (context.change.plan) return ShowPlan(context, {{"ZARNNetIpv6Init"}});
  ForgetErrors();
  if (ZARNNetIpv6Init() < 0) Fail(what);
  if (context.json) PrintJson("ipv6", Json::object());
}

// ---- the command line

void AddGet(const Group& group, Context& context) {
  const Verb verb = AddVerb(group, context, "get", "Shows how an interface gets its IPv6 address",
                            "  zarnnetctl ipv6 get eth0");
  const auto ifname = AddIfname(verb);
  verb.Run([&context, ifname] { Get(context, *ifname); });
}

void AddSet(const Group& group, Context& context) {
  const Verb verb =
      AddChange(group, context, "set", "Configures IPv6 on an interface, now and for the next boot",
                "  zarnnetctl ipv6 set eth0 auto\n"
                "  zarnnetctl ipv6 set eth0 static fd00::10/64 --gateway fd00::1");
  auto wanted = std::make_shared<Wanted>();
  verb.AddOption("IFNAME", wanted->ifname, "Name of the interface").Required().Interface();
  verb.AddOption("TYPE", wanted->type, "auto, off, dhcp, static or auto_dhcp")
      .Required()
      .OneOf(std::vector<std::string>(kTypeNames.begin(), kTypeNames.end()));
  verb.AddOption("ADDRESS", wanted->address, "ADDRESS/PREFIX, for static");
  verb.AddOption("--gateway", wanted->gateway, "Default gateway, for static");
  verb.Run([&context, wanted] { Set(context, *wanted); });
}

void AddChange(const Group& group, Context& context, Command command) {
  const std::string name = command == kAdd ? "add" : "del";
  const Verb verb =
      AddAct(group, context, name,
             command == kAdd
                 ? "Adds an address or the default route to the running system; no file changes"
                 : "Deletes an address or the default route from the running system",
             "  zarnnetctl ipv6 " + name + " eth0 fd00::20/64\n  zarnnetctl ipv6 " + name +
                 " eth0 --gateway fd00::1");
  auto wanted = std::make_shared<Wanted>();
  verb.AddOption("IFNAME", wanted->ifname, "Name of the interface").Required().Interface();
  verb.AddOption("ADDRESS", wanted->address, "ADDRESS/PREFIX");
  verb.AddOption("--gateway", wanted->gateway, "Gateway of the default route");
  verb.Run([&context, command, wanted] { Change(context, command, *wanted); });
}

void AddInit(const Group& group, Context& context) {
  AddAct(group, context, "init", "Sets router advertisements of every interface as its file asks",
         "  zarnnetctl ipv6 init", Init);
}

}  // namespace

void AddIpv6Commands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "ipv6", "Reads and changes IPv6 configuration");
  AddGet(group, context);
  AddSet(group, context);
  AddChange(group, context, kAdd);
  AddChange(group, context, kDelete);
  AddInit(group, context);
}

}  // namespace tool
