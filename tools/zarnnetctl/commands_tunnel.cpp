// SPDX-License-Identifier: Apache-2.0
// zarnnetctl tunnel: the settings of the IPv6 tunnel, and its client. The password is read from a
// file or from standard input, where no other process sees it, and is never shown.
#include <array>
#include <cstring>
#include <optional>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "commands.h"
#include "network_lock.h"
#include "put.h"
#include "query.h"
#include "secret.h"

namespace tool {
namespace {

constexpr char kIfname[] = "tun";
constexpr char kFolder[] = "/etc/gogoc";
constexpr char kScript[] = "/etc/gogoc/rc.tun";
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

void Apply(const std::string& what, const Wanted& wanted, const std::optional<Secret>& secret,
           ZARNTUNNELCONF* record) {
  if (!wanted.server.empty()) Put(what, "server", wanted.server, record->szServer);
  if (wanted.anonymous) {
    record->blAnonymous = 1;
    Put(what, "user id", "", record->szUserId);
    return;
  }
  if (!wanted.user.empty() || secret) record->blAnonymous = 0;
  if (!wanted.user.empty()) Put(what, "user id", wanted.user, record->szUserId);
  if (secret) secret->CopyTo(record->szPassword);
}

void Set(const Context& context, const Wanted& wanted) {
  const std::string what = "cannot change the settings of the tunnel";
  if (wanted.server.empty() && wanted.user.empty() && wanted.passwordFile.empty() &&
      !wanted.anonymous) {
    throw WrongUsage("tunnel set", "give what is to change");
  }
  RequireRoot(what);
  {
    std::optional<Secret> secret;  // had before the lock: somebody may have to type it
    if (!wanted.passwordFile.empty()) secret.emplace(what, wanted.passwordFile);
    const NetworkLock lock(what);
    Settings settings(what);
    Apply(what, wanted, secret, &settings.record);
    ForgetErrors();
    if (ZARNTunnelConfigSet(&settings.record) < 0) Fail(what);
  }
  if (context.json) PrintJson("tunnel", StateJson(what));
}

// ---- tunnel start, stop, restart

// One run of the client's script at a time.
class RunLock {
 public:
  explicit RunLock(const std::string& what) {
    constexpr int kExclusive = 1;
    constexpr int kWaitSeconds = 5;
    if (KOPACFileLockTimeByFile(kScript, kExclusive, kWaitSeconds, &lock_) < 0)
      throw Failure(what, ZARNNETERR_LOCK, "the tunnel is being started or stopped");
  }
  ~RunLock() { KOPACFileUnlockByFile(lock_); }
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;

 private:
  PKOPACFILELOCK lock_ = nullptr;
};

struct Action {
  int number;
  const char* name;
  const char* description;
};

constexpr std::array<Action, 3> kActions{{
    {ZARNTUNNEL_START, "start", "Starts the client; waits up to 46 seconds for the tunnel"},
    {ZARNTUNNEL_STOP, "stop", "Stops the client"},
    {ZARNTUNNEL_RESTART, "restart", "Stops the client and tries to connect for a short while"},
}};

void Execute(const Context& context, const Action& action) {
  const std::string what = std::string("cannot ") + action.name + " the tunnel";
  RequireRoot(what);
  const RunLock lock(what);
  // The client's list of brokers, which is set aside, is in the client's folder.
  if (::chdir(kFolder) != 0) throw Failure(what, ZARNNETERR_OPEN, "cannot enter /etc/gogoc");
  ForgetErrors();
  if (ZARNTunnelExecute(action.number, nullptr) < 0) Fail(what);
  if (action.number != ZARNTUNNEL_STOP && StateText() == "down")
    throw Failure(what, std::nullopt, "the client has ended; see the system log");
  if (context.json) PrintJson("tunnel", StateJson(what));
}

}  // namespace

void AddTunnelCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "tunnel", "Reads, sets and runs the IPv6 tunnel");
  const Verb get =
      AddVerb(group, context, "get", "Shows the settings and whether there is a tunnel",
              "  zarnnetctl tunnel get");
  get.Run([&context] { Get(context); });
  const Verb set =
      AddVerb(group, context, "set", "Changes the settings that are named; others stay",
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
  for (const Action& action : kActions) {
    const Verb verb = AddVerb(group, context, action.name, action.description,
                              std::string("  zarnnetctl tunnel ") + action.name);
    verb.Run([&context, &action] { Execute(context, action); });
  }
}

}  // namespace tool
