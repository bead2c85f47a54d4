// SPDX-License-Identifier: Apache-2.0
// zarnnetctl tunnel: the settings of the IPv6 tunnel, and its client. The password is read from a
// file or from standard input, where no other process sees it, and is never shown.
#include <cstring>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "commands.h"
#include "query.h"
#include "secret.h"
#include "wish.h"

namespace tool {
namespace {

constexpr char kIfname[] = "tun";
constexpr char kClient[] = "/usr/bin/gogoc";

// The record does not outlive its use: it has the password in clear.
struct Settings {
  ZARNTUNNELCONF record{};
  bool enabled = false;

  explicit Settings(const std::string& what) {
    ForgetErrors();
    const int state = ZARNTunnelConfigGet(&record);
    if (state < 0) Fail(what);
    enabled = state == 1;
  }
  ~Settings() { ::explicit_bzero(&record, sizeof record); }
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;
};

// ---- tunnel get

std::string StateText() {
  if (!ReadIpv6(kIfname).empty()) return "up";
  return KOPACIsProcAlive(kClient) == 1 ? "trying" : "down";
}

// The file of the password is root's: others cannot tell whether there is one.
Json HasPassword(const ZARNTUNNELCONF& record) {
  if (record.blAnonymous == 0 && ::geteuid() != 0) return nullptr;
  return *record.szPassword != '\0';
}

Json StateJson(const std::string& what) {
  const Settings settings(what);
  return {{"enabled", settings.enabled},
          {"server", TextOrNull(settings.record.szServer)},
          {"anonymous", settings.record.blAnonymous != 0},
          {"user_id", TextOrNull(settings.record.szUserId)},
          {"has_password", HasPassword(settings.record)},
          {"state", StateText()},
          {"live", ToJson(ReadIpv6(kIfname))}};
}

void PrintState(const Json& state) {
  const auto text = [&](const char* name) {
    return state[name].is_null() ? std::string() : state[name].get<std::string>();
  };
  const Json& password = state["has_password"];
  const std::string stored = password.is_null() ? "" : password.get<bool>() ? "stored" : "none";
  const std::string name = text("state");
  std::vector<Row> rows{
      {{"service"}, {state["enabled"].get<bool>() ? "enabled" : "disabled"}},
      {{"server"}, {text("server")}},
      {{"login"}, {state["anonymous"].get<bool>() ? "anonymous" : text("user_id")}},
      {{"password"}, {stored}},
      {{"state"}, {name, name == "up" ? Tone::kGood : Tone::kPlain}}};
  for (const ZARNNETV6ADDR& address : ReadIpv6(kIfname))
    rows.push_back({{"live"}, {Ipv6Text(address)}});
  PrintTable(rows);
}

void Get(const Context& context) {
  const Json state = StateJson("cannot read the settings of the tunnel");
  if (context.json) return PrintJson("tunnel", state);
  PrintState(state);
}

// ---- tunnel set

struct Wanted {
  std::string server;
  std::string user;
  std::string passwordFile;
  bool anonymous = false;
};

void Set(Context& context, const Wanted& wanted) {
  Json tunnel = Json::object();
  const bool login = !wanted.user.empty() || !wanted.passwordFile.empty();
  if (!wanted.server.empty()) tunnel["server"] = wanted.server;
  if (wanted.anonymous || login) tunnel["anonymous"] = wanted.anonymous;
  if (wanted.anonymous) tunnel["user"] = nullptr;
  if (!wanted.user.empty()) tunnel["user"] = wanted.user;
  if (!wanted.passwordFile.empty()) {
    tunnel["password"] =
        ReadSecret("cannot change the settings of the tunnel", wanted.passwordFile);
  }
  if (tunnel.empty()) throw WrongUsage("tunnel set", "give what is to change");
  MakeChange(context, {{"tunnel", tunnel}});
}

}  // namespace

void AddTunnelCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "tunnel", "Reads, sets and runs the IPv6 tunnel");
  const Verb get =
      AddVerb(group, context, "get", "Shows the settings and whether there is a tunnel",
              "  zarnnetctl tunnel get");
  get.Run([&context] { Get(context); });
  const Verb set =
      AddChange(group, context, "set", "Changes the settings that are named; others stay",
                "  zarnnetctl tunnel set --server broker.example --anonymous\n"
                "  zarnnetctl tunnel set --user bob --password-file /root/secret");
  auto wanted = std::make_shared<Wanted>();
  set.AddOption("--server", wanted->server, "The tunnel broker");
  const Word anonymous = set.AddFlag("--anonymous", wanted->anonymous, "Without a login");
  set.AddOption("--user", wanted->user, "User id of the login").Excludes(anonymous);
  set.AddOption("--password-file", wanted->passwordFile,
                "Its password: the first line of this file; - is standard input")
      .File()
      .Excludes(anonymous);
  set.Run([&context, wanted] { Set(context, *wanted); });
  AddChange(group, context, "start", "Starts the client; waits up to 46 seconds for the tunnel",
            "  zarnnetctl tunnel start")
      .Run([&context] {
        MakeChange(context, {{"tunnel", {{"enabled", true}}}});
      });
  AddChange(group, context, "stop", "Stops the client", "  zarnnetctl tunnel stop").Run([&context] {
    MakeChange(context, {{"tunnel", {{"enabled", false}}}});
  });
  AddChange(group, context, "restart", "Stops the client and tries to connect for a short while",
            "  zarnnetctl tunnel restart")
      .Run([&context] { MakeChange(context, {}, {"/tunnel"}); });
}

}  // namespace tool
