// SPDX-License-Identifier: Apache-2.0
// zarnnetctl pppoe and pppoe-relay: the account that is dialled with, its client, and the relays.
// The password is read from a file or from standard input, and is never shown.
#include <array>
#include <cstring>
#include <optional>
#include <strings.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "commands.h"
#include "plan.h"
#include "query.h"
#include "secret.h"
#include "wish.h"

namespace tool {
namespace {

constexpr char kAccount[] = "/etc/ppp/pppoe.conf";
constexpr char kInfo[] = "/etc/zarninfo.conf";
constexpr char kConnection[] = "pppoe-connect";
constexpr char kRelay[] = "/usr/sbin/pppoe-relay";

// ---- pppoe get

// The record does not outlive its use: it has the password in clear.
struct Account {
  PPPOE_CONF record{};
  bool stored;

  Account() : stored(PPPoEConfigGet(&record) == 0) {}
  ~Account() { ::explicit_bzero(&record, sizeof record); }
  Account(const Account&) = delete;
  Account& operator=(const Account&) = delete;

  [[nodiscard]] bool HasUser() const { return stored && *record.user != '\0'; }
};

Json AccountJson(const std::string& what) {
  const Account account;
  if (!account.stored) throw Failure(what, std::nullopt, "no account is stored, or not readable");
  return {{"interface", TextOrNull(account.record.eth)},
          {"user", TextOrNull(account.record.user)},
          {"has_password", *account.record.password != '\0'},
          {"mtu", TextOrNull(account.record.mtu)},
          {"default_route", account.record.defaultroute == 1}};
}

std::string CellText(const Json& value) {
  return value.is_null() ? "" : value.get<std::string>();
}

std::string YesNo(const Json& value) {
  return value.get<bool>() ? "yes" : "no";
}

// The password is read with the account, and its file is root's: another user is shown the rest.
Json AccountWithoutSecret(const std::string& what) {
  if (::access(kAccount, F_OK) == 0 && ::access(kAccount, R_OK) != 0) RequireRoot(what);
  const Json account = PartOf(ReadState({"pppoe"}), "/pppoe");
  if (account.is_null()) throw Failure(what, std::nullopt, "no account is stored");
  const Json mtu = account.value("mtu", Json());
  return {{"interface", account.value("interface", Json())},
          {"user", account.value("user", Json())},
          {"has_password", nullptr},
          {"mtu", mtu.is_null() ? mtu : Json(WrittenOut(mtu))},
          {"default_route", account.value("default_route", false)}};
}

std::string PasswordCell(const Json& stored) {
  if (stored.is_null()) return "only root may see whether one is stored";
  return stored.get<bool>() ? "stored" : "none";
}

void Get(const Context& context) {
  const std::string what = "cannot read the PPPoE account";
  const Json account = ::geteuid() == 0 ? AccountJson(what) : AccountWithoutSecret(what);
  if (context.json) return PrintJson("pppoe", account);
  PrintTable({{{"interface"}, {CellText(account["interface"])}},
              {{"user"}, {CellText(account["user"])}},
              {{"password"}, {PasswordCell(account["has_password"])}},
              {{"mtu"}, {CellText(account["mtu"])}},
              {{"default route"}, {YesNo(account["default_route"])}}});
}

// ---- pppoe set

struct Wanted {
  std::string interface;
  std::string user;
  std::string passwordFile;
  std::optional<int> mtu;
  bool defaultRoute = false;
  bool noDefaultRoute = false;
};

void Set(Context& context, const Wanted& wanted) {
  Json pppoe = Json::object();
  if (!wanted.interface.empty()) pppoe["interface"] = wanted.interface;
  if (!wanted.user.empty()) pppoe["user"] = wanted.user;
  if (wanted.mtu) pppoe["mtu"] = *wanted.mtu;
  if (wanted.defaultRoute || wanted.noDefaultRoute) pppoe["default_route"] = wanted.defaultRoute;
  if (!wanted.passwordFile.empty())
    pppoe["password"] = ReadSecret("cannot change the PPPoE account", wanted.passwordFile);
  if (pppoe.empty()) throw WrongUsage("pppoe set", "give what is to change");
  MakeChange(context, {{"pppoe", pppoe}});
}

// ---- pppoe status, start, stop

bool IsEnabled() {
  constexpr char kYes[] = "yes";
  std::array<char, 64> value{};
  return KOPACFileGetKeyValue(kInfo, "pppoe_enable", value.data(), value.size(), 0) > 0 &&
         ::strcasecmp(value.data(), kYes) == 0;
}

// The library's own check ends a client that is not meant to run; a look leaves it alone.
Json StatusJson() {
  std::array<char, 16> ifname{};
  std::array<char, 16> ip{};
  std::array<char, 16> mask{};
  const bool known = ZARNPPPoeIntfGet(ifname.data(), ifname.size()) == 0;
  const bool live =
      known && ZARNPPPoeNetInfoGet(ip.data(), ip.size(), mask.data(), mask.size()) == 0;
  return {{"enabled", IsEnabled()},
          {"running", KOPACPs(kConnection, nullptr, 0) > 0},
          {"interface", TextOrNull(known ? ifname.data() : "")},
          {"address", live ? ToJson(Address{ip.data(), mask.data()}) : Json()}};
}

void Status(const Context& context) {
  const Json status = StatusJson();
  if (context.json) return PrintJson("pppoe_status", status);
  const Json& address = status["address"];
  const std::string live =
      address.is_null() ? "" : AddressText({CellText(address["ip"]), CellText(address["mask"])});
  PrintTable({{{"enabled"}, {YesNo(status["enabled"])}},
              {{"running"}, {YesNo(status["running"])}},
              {{"interface"}, {CellText(status["interface"])}},
              {{"address"}, {live}}});
}

// ---- pppoe-relay

// The library's own reader makes the file where there is none; a look changes nothing.
Json RelayJson(const std::string& ifname) {
  const Json relays = PartOf(ReadState({"pppoe_relay"}), "/pppoe_relay");
  const Json relay = relays.is_object() ? relays.value(ifname, Json()) : Json();
  const std::string process = std::string(kRelay).append(" -C ").append(ifname);
  return {{"name", ifname},
          {"enabled", relay.is_object() && relay.value("enabled", false)},
          {"server", relay.is_object() && relay.contains("server") ? relay["server"] : Json()},
          {"running", KOPACIsProcAlive(process.c_str()) == 1}};
}

void RelayGet(const Context& context, const std::string& ifname) {
  const std::string what = "cannot read the PPPoE relay of '" + ifname + "'";
  RequireInterface(what, ifname);
  const Json relay = RelayJson(ifname);
  if (context.json) return PrintJson("pppoe_relay", relay);
  PrintTable({{{"enabled"}, {YesNo(relay["enabled"])}},
              {{"server"}, {CellText(relay["server"])}},
              {{"running"}, {YesNo(relay["running"])}}});
}

struct WantedRelay {
  std::string ifname;
  std::string server;
  bool enable = false;
  bool disable = false;
};

void RelaySet(Context& context, const WantedRelay& wanted) {
  if (wanted.server.empty() && !wanted.enable && !wanted.disable)
    throw WrongUsage("pppoe-relay set", "give what is to change");
  Json wish;
  Json& relay = wish["pppoe_relay"][wanted.ifname];
  if (!wanted.server.empty()) relay["server"] = wanted.server;
  if (wanted.enable || wanted.disable) relay["enabled"] = wanted.enable;
  MakeChange(context, wish);
}

void RelayClear(Context& context) {
  const std::string what = "cannot clear the PPPoE relays";
  RequireRootToAct(context, what);
  if (context.change.plan) return ShowPlan(context, {{"ZARNNetClearPPPoERelayConfigAll"}});
  ForgetErrors();
  if (ZARNNetClearPPPoERelayConfigAll() < 0) Fail(what);
  if (context.json) PrintJson("pppoe_relays", Json::array());
}

// ---- the command line

void AddSet(const Group& group, Context& context) {
  const Verb set =
      AddChange(group, context, "set", "Changes what is named of the account; the rest stays",
                "  zarnnetctl pppoe set --interface eth1 --user bob --password-file /root/secret\n"
                "  zarnnetctl pppoe set --mtu 1452 --default-route");
  auto wanted = std::make_shared<Wanted>();
  set.AddOption("--interface", wanted->interface, "The interface to dial on").Interface();
  set.AddOption("--user", wanted->user, "Name of the account");
  set.AddOption("--mtu", wanted->mtu, "MTU of the link");
  const Word route =
      set.AddFlag("--default-route", wanted->defaultRoute, "The link becomes the default route");
  set.AddFlag("--no-default-route", wanted->noDefaultRoute, "It does not").Excludes(route);
  set.AddOption("--password-file", wanted->passwordFile,
                "The password: the first line of this file; - is standard input")
      .File();
  set.Run([&context, wanted] { Set(context, *wanted); });
}

void AddClient(const Group& app, Context& context) {
  const Group group = AddGroup(app, "pppoe", "Reads, sets and runs the PPPoE client");
  AddVerb(group, context, "get", "Shows the account, without its password",
          "  zarnnetctl pppoe get")
      .Run([&context] { Get(context); });
  AddSet(group, context);
  AddChange(group, context, "start", "Dials, and does so at each boot", "  zarnnetctl pppoe start")
      .Run([&context] {
        MakeChange(context, {{"pppoe", {{"enabled", true}}}});
      });
  AddChange(group, context, "stop", "Hangs up", "  zarnnetctl pppoe stop").Run([&context] {
    MakeChange(context, {{"pppoe", {{"enabled", false}}}});
  });
  AddVerb(group, context, "status", "Shows whether the client runs, and its address",
          "  zarnnetctl pppoe status")
      .Run([&context] { Status(context); });
}

void AddRelay(const Group& app, Context& context) {
  const Group group =
      AddGroup(app, "pppoe-relay", "Hands the PPPoE discovery of clients on to another interface");
  const Verb get = AddVerb(group, context, "get", "Shows the relay of an interface",
                           "  zarnnetctl pppoe-relay get eth1");
  get.Run([&context, ifname = AddIfname(get)] { RelayGet(context, *ifname); });

  const Verb set = AddChange(group, context, "set", "Changes what is named; the rest stays",
                             "  zarnnetctl pppoe-relay set eth1 --server eth0 --enable");
  auto wanted = std::make_shared<WantedRelay>();
  set.AddOption("IFNAME", wanted->ifname, "The interface with the clients").Required().Interface();
  set.AddOption("--server", wanted->server, "The interface on the server's side").Interface();
  const Word enable = set.AddFlag("--enable", wanted->enable, "Relay");
  set.AddFlag("--disable", wanted->disable, "Do not relay").Excludes(enable);
  set.Run([&context, wanted] { RelaySet(context, *wanted); });

  AddChange(group, context, "apply", "Starts or ends the relays as the settings say",
            "  zarnnetctl pppoe-relay apply")
      .Run([&context] { MakeChange(context, {}, {"/pppoe_relay"}); });

  AddAct(group, context, "clear", "Deletes the settings of all relays; those that run stay",
         "  zarnnetctl pppoe-relay clear", RelayClear);
}

}  // namespace

void AddPppoeCommands(const Group& app, Context& context) {
  AddClient(app, context);
  AddRelay(app, context);
}

}  // namespace tool
