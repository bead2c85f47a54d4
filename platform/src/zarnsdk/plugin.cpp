// SPDX-License-Identifier: Apache-2.0
// Plugin events: every executable in the folder of an event is run, in name order, with the stage
// as its argument and the event's own arguments in its environment.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <zarnsdk/zarnsdk.h>

#include "common/child.h"
#include "common/clock.h"
#include "common/descriptor.h"
#include "common/error.h"

using platform::Code;
using platform::Fail;

struct KOPAPLUGIN {
  std::string folder;
  std::vector<std::pair<std::string, std::string>> arguments;  // in the order they were first set
};

namespace {

constexpr char kPlugins[] = "/usr/zarn/plugins/";
constexpr int kStageBefore = 4;
constexpr int kStageAfter = 5;
constexpr int kTimeLimitSeconds = 30;
constexpr std::int64_t kTimeLimit = kTimeLimitSeconds * platform::kNanosecondsPerSecond;

bool IsSafePath(std::string_view text) {
  return !text.empty() && text.find("..") == std::string_view::npos && text.front() != '/';
}

// A name that the environment can carry and that does not decide what a plugin loads or runs.
bool IsArgumentName(const char* name) {
  const std::string_view text(name != nullptr ? name : "");
  if (text.empty() || text == "PATH" || text.starts_with("LD_")) return false;
  return std::all_of(text.begin(), text.end(), [](char c) {
    return c == '_' || std::isupper(static_cast<unsigned char>(c)) != 0 ||
           std::isdigit(static_cast<unsigned char>(c)) != 0;
  });
}

void Put(KOPAPLUGIN* plugin, const std::string& name, const std::string& value) {
  for (auto& [present, text] : plugin->arguments) {
    if (present != name) continue;
    text = value;
    return;
  }
  plugin->arguments.emplace_back(name, value);
}

// The arguments, and PLUGIN_ARGS with their names.
std::vector<std::string> VariablesOf(const KOPAPLUGIN& plugin) {
  std::vector<std::string> variables;
  std::string names;
  for (const auto& [name, value] : plugin.arguments) {
    variables.push_back(std::string(name).append("=").append(value));
    if (!names.empty()) names += ' ';
    names += name;
  }
  variables.push_back("PLUGIN_ARGS=" + names);
  return variables;
}

bool IsProgram(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

// The core library's list. It may move while it grows.
class NameList {
 public:
  NameList() : list_(KOPACSzListAlloc(16)) {}
  ~NameList() { KOPACSzListFree(list_); }
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;
  // The names in a folder, sorted. False when it cannot be read.
  [[nodiscard]] bool Read(const std::string& folder) {
    return list_ != nullptr && KOPACFileEnumDir(folder.c_str(), nullptr, &list_, 0) >= 0;
  }
  [[nodiscard]] int Count() const { return list_->nItem; }
  [[nodiscard]] const char* Name(int index) const { return KOPACSzListGet(list_, index); }

 private:
  PKOPACSZLIST list_;
};

// The programs of an event, none where it has no folder. Nothing when the folder cannot be read.
std::optional<std::vector<std::string>> ProgramsIn(const std::string& folder) {
  std::vector<std::string> programs;
  if (KOPACFileExist(folder.c_str()) == 0) return programs;
  NameList names;
  if (!names.Read(folder)) return std::nullopt;
  for (int i = 0; i < names.Count(); ++i) {
    std::string path = folder + "/" + names.Name(i);
    if (IsProgram(path)) programs.push_back(std::move(path));
  }
  return programs;
}

// Waits on a descriptor of the process: no signal handler, no timer. False when the time is up.
bool WaitForEnd(pid_t child) {
  const platform::Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  // Reaped by a handler of the caller's, or an old kernel: wait without a limit.
  if (!process) return true;
  const std::int64_t deadline = platform::NowNanoseconds() + kTimeLimit;
  for (;;) {
    pollfd ended{process.Get(), POLLIN, 0};
    const std::int64_t left = std::max<std::int64_t>(deadline - platform::NowNanoseconds(), 0);
    const int ready =
        ::poll(&ended, 1, static_cast<int>(left / platform::kNanosecondsPerMillisecond));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR || left == 0) return false;
  }
}

// True when the plugin ended in time and with exit status 0.
bool RunPlugin(const std::string& program, const char* stage,
               const platform::Environment& environment) {
  const char* const argv[] = {program.c_str(), stage, nullptr};
  // In a process group of its own, so that a plugin's own children end with it.
  const pid_t child =
      platform::ChildSetup(-1, POSIX_SPAWN_SETPGROUP).Start(program.c_str(), argv, environment);
  if (child < 0) {
    ::syslog(LOG_ERR, "plugin %s %s could not be started: %m", program.c_str(), stage);
    return false;
  }
  const bool inTime = WaitForEnd(child);
  if (!inTime) ::kill(-child, SIGKILL);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!inTime) {
    ::syslog(LOG_ERR, "plugin %s %s was ended after %d seconds", program.c_str(), stage,
             kTimeLimitSeconds);
  } else if (WIFSIGNALED(status)) {
    ::syslog(LOG_ERR, "plugin %s %s ended by signal %d", program.c_str(), stage, WTERMSIG(status));
  } else if (WEXITSTATUS(status) != 0) {
    ::syslog(LOG_ERR, "plugin %s %s failed with exit status %d", program.c_str(), stage,
             WEXITSTATUS(status));
  }
  return inTime && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int KOPAPluginSDKInit(const char* szCategory, const char* szEvent, PKOPAPLUGIN* ppPlugin) try {
  if (szCategory == nullptr || szEvent == nullptr || ppPlugin == nullptr)
    return Fail(Code::kArgument);
  const std::string category(szCategory);
  const std::string_view event(szEvent);
  if (!IsSafePath(category) || !IsSafePath(event)) return Fail(Code::kArgument);
  // The events of a category are named with it, or without.
  const std::string name =
      event.starts_with(category + "/") ? std::string(event) : category + "/" + szEvent;
  *ppPlugin = new KOPAPLUGIN{kPlugins + name, {}};
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPAPluginSetArg(PKOPAPLUGIN pPlugin, const char* szName, const char* szValue) try {
  if (pPlugin == nullptr || !IsArgumentName(szName) || szValue == nullptr)
    return Fail(Code::kArgument);
  Put(pPlugin, szName, szValue);
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPAPluginSetArgByInt(PKOPAPLUGIN pPlugin, const char* szName, int value) try {
  return KOPAPluginSetArg(pPlugin, szName, std::to_string(value).c_str());
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPAPluginSetArgByArray(PKOPAPLUGIN pPlugin, const char* szName,
                            const KOPACSZLIST* pValues) try {
  if (pPlugin == nullptr || !IsArgumentName(szName) || pValues == nullptr)
    return Fail(Code::kArgument);
  const std::string name(szName);
  // A shorter list set again leaves nothing of a longer one.
  std::erase_if(pPlugin->arguments, [&](const auto& argument) {
    const std::string_view rest(argument.first);
    if (!rest.starts_with(name + "_")) return false;
    const std::string_view number = rest.substr(name.size() + 1);
    return !number.empty() && std::all_of(number.begin(), number.end(), [](char c) {
      return std::isdigit(static_cast<unsigned char>(c)) != 0;
    });
  });
  for (int i = 0; i < pValues->nItem; ++i) {
    Put(pPlugin, name + "_" + std::to_string(i + 1), KOPACSzListGet(pValues, i));
  }
  Put(pPlugin, name + "_COUNT", std::to_string(pValues->nItem));
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

// Every plugin is run, also after one that failed.
int KOPAPluginAction(int stage, PKOPAPLUGIN pPlugin) try {
  if (pPlugin == nullptr || (stage != kStageBefore && stage != kStageAfter))
    return Fail(Code::kArgument);
  const char* const text = stage == kStageBefore ? "pre" : "post";
  const platform::Environment environment(VariablesOf(*pPlugin));
  const auto programs = ProgramsIn(pPlugin->folder);
  if (!programs) return -1;
  bool ok = true;
  for (const std::string& program : *programs) {
    ok = RunPlugin(program, text, environment) && ok;
  }
  return ok ? 0 : Fail(Code::kProgram);
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPAPluginHasInit(PKOPAPLUGIN pPlugin) {
  return pPlugin != nullptr ? 1 : 0;
}

void KOPAPluginExit(PKOPAPLUGIN pPlugin) {
  delete pPlugin;
}
