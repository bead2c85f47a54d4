// SPDX-License-Identifier: Apache-2.0
// Starts, stops and restarts the tunnel broker client. The caller makes the client's settings,
// waits for its script for a while, and judges by what the kernel and the process table show
// afterwards.
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/tunnel.h>
#include <zarnsdk/zarnsdk.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/undo.h"
#include "frame/facts/addresses.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/line_file.h"
#include "frame/os/watched_command.h"
#include "tunnel/settings.h"

using namespace frame;
using namespace tunnel;

namespace {

constexpr char kBrokerList[] = "tsp-broker-list.txt";
constexpr char kBrokerListBackup[] = "tsp-broker-list.txt.bak";
constexpr char kRelayService[] = "zarnrelayd";
constexpr int kLooks = 46;

// ---- the client's settings

struct Setting {
  const char* key;
  const char* value;
};

constexpr std::array<Setting, 5> kHostSettings{{
    {"host_type", "host"},
    {"prefixlen", "64"},
    {"if_prefix", ""},
    {"dns_server", ""},
    {"gogoc_dir", paths::kGogocFolder},
}};

// A start is for good: it waits longer and never gives up. A restart is watched by somebody.
constexpr std::array<Setting, 3> kStartRetries{{
    {"auto_retry_connect", "yes"},
    {"retry_delay", "10"},
    {"retry_delay_max", "30"},
}};
constexpr std::array<Setting, 3> kRestartRetries{{
    {"auto_retry_connect", "no"},
    {"retry_delay", "3"},
    {"retry_delay_max", "5"},
}};

constexpr std::array<Setting, 19> kTunnelSettings{{
    {"keepalive", "yes"},
    {"keepalive_interval", "30"},
    {"tunnel_mode", "v6udpv4"},
    {"if_tunnel_v6v4", "sit1"},
    {"if_tunnel_v6udpv4", kIfname},
    {"if_tunnel_v4v6", "sit0"},
    {"client_v4", "auto"},
    {"client_v6", "auto"},
    {"template", "linux"},
    {"proxy_client", "no"},
    {"broker_list", kBrokerList},
    {"last_server", "tsp-last-server.txt"},
    {"always_use_same_server", "no"},
    {"log_file", "0"},
    {"log_filename", "gogoc.log"},
    {"log_rotation", "yes"},
    {"log_rotation_size", "32"},
    {"log_rotation_delete", "no"},
    {"syslog_facility", "USER"},
}};

template <std::size_t N>
void Add(const std::array<Setting, N>& settings, KeyEdit* edit) {
  for (const Setting& setting : settings)
    edit->Set(setting.key, setting.value);
}

void AddUser(const ZARNTUNNELCONF& conf, KeyEdit* edit) {
  const bool anonymous = conf.blAnonymous != 0;
  edit->Set("server", conf.szServer);
  edit->Set("auth_method", anonymous ? kAnonymous : "any");
  edit->Set("userid", anonymous ? "" : conf.szUserId);
  const std::string password(FieldText(conf.szPassword));
  edit->Set("passwd", anonymous ? "" : password.c_str());
}

void RemoveClientSettings() {
  ::unlink(paths::kGogocConf);  // mostly there is none, and nobody can do more about one that stays
}

// The file is new and the owner's alone before anything is in it; touching and writing keep that.
// One that an interrupted run has left may have any mode, so it goes first.
bool MakePrivateFile() {
  RemoveClientSettings();
  const Descriptor fd(
      ::open(paths::kGogocConf, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!fd) return Fail(ZARNNETERR_OPEN, false);
  return Touch(paths::kGogocConf);
}

bool WriteClientSettings(int action, const ZARNTUNNELCONF& conf) {
  KeyEdit settings;
  Add(kHostSettings, &settings);
  Add(action == ZARNTUNNEL_RESTART ? kRestartRetries : kStartRetries, &settings);
  Add(kTunnelSettings, &settings);
  AddUser(conf, &settings);
  if (MakePrivateFile() && settings.WriteTo(paths::kGogocConf, nullptr)) return true;
  LOG_ERROR("%s:%d failed to make gogoc config file");
  RemoveClientSettings();
  return false;
}

bool MakeClientSettings(int action, const ZARNTUNNELCONF* given) {
  if (given != nullptr) return WriteClientSettings(action, *given);
  const auto stored = ReadStored();
  if (stored) return WriteClientSettings(action, *stored);
  LOG_ERROR("%s:%d unable to get Tunnel config, file crashed or not set.");
  return false;
}

// ---- the script

const char* WordOf(int action) {
  switch (action) {
    case ZARNTUNNEL_START:
      return "start";
    case ZARNTUNNEL_STOP:
      return "stop";
    case ZARNTUNNEL_RESTART:
      return "restart";
    default:
      return nullptr;
  }
}

// Is there something to run, and what it needs? A stop needs no settings, and takes what an
// interrupted run has left of them, the password in clear, with it.
bool IsReadyToRun(int action, const ZARNTUNNELCONF* conf) {
  const bool connects = action == ZARNTUNNEL_START || action == ZARNTUNNEL_RESTART;
  if (!connects) RemoveClientSettings();
  if (!connects || MakeClientSettings(action, conf)) return WordOf(action) != nullptr;
  LOG_ERROR("%s:%d Failed to make tunnel config file.");
  return false;
}

// False when it has not ended in time.
bool WaitFor(WatchedCommand* script) {
  for (int look = 1; !script->HasEnded(); ++look) {
    if (look == kLooks) {
      LOG_ERROR("%s:%d connecting to tunnel broker timeout");
      return false;
    }
    ::sleep(1);
  }
  return true;
}

void TellHowItEnded(const WatchedCommand& script, const char* word) {
  const auto outcome = script.HowItEnded();
  if (outcome == WatchedCommand::Outcome::kUnknown) return RemoveClientSettings();
  if (outcome == WatchedCommand::Outcome::kFailed) {
    LOG_ERROR("%s:%d excute command %s %s failed", paths::kRcTun, word);
  }
  LOG_NOTE("%s:%d done gogoc processing");
}

// The settings are the script's alone to read, and go when it has ended. What cannot be made ready
// is told, and what there is is judged all the same. False when there is no process to wait for.
bool RunScript(int action, const ZARNTUNNELCONF* conf) {
  Undo undo;
  undo.Add(RemoveClientSettings);
  const bool ready = IsReadyToRun(action, conf);
  WatchedCommand script;
  if (!script.Start(ready ? paths::kRcTun : nullptr, WordOf(action), paths::kGogocConf))
    return Fail(ZARNNETERR_COMMAND, false);
  undo.Keep();
  if (WaitFor(&script) && ready) TellHowItEnded(script, WordOf(action));
  return true;
}

// ---- the outcome

// The names are relative: the client keeps its list in the folder that it was started in.
void SetBrokerListAside() {
  if (std::rename(kBrokerList, kBrokerListBackup) == 0) return;
  const int error = errno;
  LOG_NOTE("%s:%d unable to move broker_list, %s, errno:%d, %s", kBrokerList, error,
           std::strerror(error));
}

bool HasIpv6Address() {
  const auto addresses = facts::KernelV6Addresses(kIfname);
  return addresses && !addresses->empty();
}

// A start leaves a client that has no tunnel yet: it goes on trying.
bool EndHungClient(int action) {
  if (action == ZARNTUNNEL_START) {
    RemoveClientSettings();
    return false;
  }
  LOG_ERROR("%s:%d gogoc hangs, terminate it.");
  static_cast<void>(EndProcesses(paths::kGogoc));  // the hanging client is the failure
  RemoveClientSettings();
  return true;
}

bool IsOutcomeRight(int action) {
  if (HasIpv6Address()) {
    if (action == ZARNTUNNEL_STOP) {
      LOG_ERROR("%s:%d gogoc still alive, failed to stop");
      return Fail(ZARNNETERR_COMMAND, false);
    }
    LOG_NOTE("%s:%d tunnel connection setup");
    return true;
  }
  const bool hangs = IsRunning(paths::kGogoc) && WordOf(action) != nullptr && EndHungClient(action);
  return !hangs || Fail(ZARNNETERR_COMMAND, false);
}

}  // namespace

int ZARNTunnelExecute(int action, const ZARNTUNNELCONF* pConf) {
  return Boundary(-1, [&]() -> int {
    if (action != ZARNTUNNEL_STOP && pConf != nullptr && !IsFit(*pConf))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (!RunScript(action, pConf)) return -1;
    SetBrokerListAside();
    if (!IsOutcomeRight(action)) return -1;
    // A relay that misses the news learns it at its next start.
    if (KOPAServiceIsRunning(kRelayService) == 1)
      static_cast<void>(KOPAServiceReload(kRelayService));
    return 0;
  });
}
