// Starts, stops and restarts the tunnel broker client. A child process makes the client's settings
// and runs its script; the caller watches over the child and judges by what the kernel and the
// process table show afterwards.
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zarncore/zarncore.h>
#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/tunnel.h>
#include <zarnsdk/zarnsdk.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
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
void Add(const std::array<Setting, N>& settings, StringHash* hash) {
  for (const Setting& setting : settings)
    hash->Set(setting.key, setting.value);
}

void AddUser(const ZARNTUNNELCONF& conf, StringHash* hash) {
  const bool anonymous = conf.blAnonymous != 0;
  hash->Set("server", conf.szServer);
  hash->Set("auth_method", anonymous ? kAnonymous : "any");
  hash->Set("userid", anonymous ? "" : conf.szUserId);
  const std::string password(FieldText(conf.szPassword));
  hash->Set("passwd", anonymous ? "" : password.c_str());
}

void RemoveClientSettings() {
  ::unlink(paths::kGogocConf);  // mostly there is none, and nobody can do more about one that stays
}

// The file is new and the owner's alone before anything is in it; touching and writing keep that.
// One that an interrupted run left may have any mode, so it goes first.
bool MakePrivateFile() {
  RemoveClientSettings();
  const Descriptor fd(
      ::open(paths::kGogocConf, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  return static_cast<bool>(fd) && KOPACFileTouch(paths::kGogocConf) >= 0;
}

bool WriteClientSettings(int action, const ZARNTUNNELCONF& conf) {
  StringHash settings;
  Add(kHostSettings, &settings);
  Add(action == ZARNTUNNEL_RESTART ? kRestartRetries : kStartRetries, &settings);
  Add(kTunnelSettings, &settings);
  AddUser(conf, &settings);
  if (MakePrivateFile() &&
      KOPACFileSetKeys(paths::kGogocConf, settings.Get(), nullptr, nullptr) >= 0) {
    return true;
  }
  LOG_ERROR("%s:%d failed to make gogoc config file");
  RemoveClientSettings();
  return false;
}

bool MakeClientSettings(int action, const ZARNTUNNELCONF* given) {
  ZARNTUNNELCONF stored{};
  if (given == nullptr && ZARNTunnelConfigGet(&stored) < 0) {
    LOG_ERROR("%s:%d unable to get Tunnel config, file crashed or not set.");
    return false;
  }
  return WriteClientSettings(action, given != nullptr ? *given : stored);
}

// ---- the child

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

void RunScript(int action, const ZARNTUNNELCONF* conf) {
  const char* const word = WordOf(action);
  if (word == nullptr) return RemoveClientSettings();
  const bool connects = action != ZARNTUNNEL_STOP;
  if (connects && !MakeClientSettings(action, conf)) {
    LOG_ERROR("%s:%d Failed to make tunnel config file.");
    return;
  }
  if (RunStatus(paths::kRcTun, word) != 0) {
    LOG_ERROR("%s:%d excute command %s %s failed", paths::kRcTun, word);
  }
  if (connects) RemoveClientSettings();
  LOG_NOTE("%s:%d done gogoc processing");
}

// Whoever reads the caller's output to its end must not wait for a child that hangs.
void LetGoOfStreams() {
  const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    ::dup2(null.Get(), stream);
}

// The caller's buffers and exit handlers are the caller's: the child ends without them, and always
// well, since nobody asks it.
[[noreturn]] void BeChild(int action, const ZARNTUNNELCONF* conf) {
  try {
    LetGoOfStreams();
    RunScript(action, conf);
  } catch (...) {
    LOG_ERROR("%s:%d Failed to make tunnel config file.");
    RemoveClientSettings();
  }
  ::_exit(0);
}

// ---- the caller

// A child that is nobody's any more, in a caller that ignores its children, has ended too. One that
// was killed could not tidy up.
bool HasEnded(pid_t child) {
  int status = 0;
  const pid_t ended = ::waitpid(child, &status, WNOHANG);
  if (ended == child && WIFSIGNALED(status)) RemoveClientSettings();
  return ended != 0;
}

void WaitFor(pid_t child) {
  for (int look = 1; !HasEnded(child); ++look) {
    if (look == kLooks) {
      LOG_ERROR("%s:%d connecting to tunnel broker timeout");
      return;
    }
    ::sleep(1);
  }
}

// The names are relative: the client keeps its list in the folder that it was started in.
void SetBrokerListAside() {
  if (std::rename(kBrokerList, kBrokerListBackup) == 0) return;
  const int error = errno;
  LOG_NOTE("%s:%d unable to move broker_list, %s, errno:%d, %s", kBrokerList, error,
           std::strerror(error));
}

bool HasIpv6Address() {
  ZARNNETV6ADDR address{};
  return ZARNLnxV6IPGet(kIfname, &address, 1) > 0;
}

// A start leaves a client that has no tunnel yet: it goes on trying.
bool EndHungClient(int action) {
  if (action == ZARNTUNNEL_START) {
    RemoveClientSettings();
    return false;
  }
  LOG_ERROR("%s:%d gogoc hangs, terminate it.");
  constexpr int kWaitForEnd = 1;
  KOPACKill(paths::kGogoc, kWaitForEnd);
  RemoveClientSettings();
  return true;
}

bool IsOutcomeRight(int action) {
  if (HasIpv6Address()) {
    if (action == ZARNTUNNEL_STOP) {
      LOG_ERROR("%s:%d gogoc still alive, failed to stop");
      return false;
    }
    LOG_NOTE("%s:%d tunnel connection setup");
    return true;
  }
  return KOPACIsProcAlive(paths::kGogoc) != 1 || WordOf(action) == nullptr ||
         !EndHungClient(action);
}

}  // namespace

int ZARNTunnelExecute(int action, const ZARNTUNNELCONF* pConf) {
  return Boundary(-1, [&]() -> int {
    if (action != ZARNTUNNEL_STOP && pConf != nullptr && !IsFit(*pConf))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const pid_t child = ::fork();
    if (child < 0) return -1;
    if (child == 0) BeChild(action, pConf);
    WaitFor(child);
    SetBrokerListAside();
    if (!IsOutcomeRight(action)) return -1;
    // A relay that misses the news learns it at its next start.
    if (KOPAServiceIsRunning(kRelayService) == 1)
      static_cast<void>(KOPAServiceReload(kRelayService));
    return 0;
  });
}
