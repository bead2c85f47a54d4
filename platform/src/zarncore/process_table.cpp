// Which programs run, and ending them: by name, by command line, by process id.
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include <zarncore/zarncore.h>

#include "whole_file.h"

namespace {

constexpr std::size_t kKernelNameLength = 15;
// How long KOPACKill() waits for an end by SIGTERM, and then by SIGKILL.
constexpr int kPatienceMilliseconds = 3000;
constexpr int kEndMilliseconds = 1000;

std::string_view BaseName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string ProcFile(pid_t pid, const char* file) {
  return "/proc/" + std::to_string(pid) + "/" + file;
}

// "PID (name) STATE ...": the name may hold anything, so it ends at the last parenthesis. Nothing
// for a process that has ended and is only waiting to be reaped.
std::optional<std::string> NameOf(pid_t pid) {
  const auto status = zarncore::ReadWhole(ProcFile(pid, "stat").c_str());
  if (!status) return std::nullopt;
  const std::size_t open = status->find('(');
  const std::size_t close = status->rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return std::nullopt;
  const char state = close + 2 < status->size() ? (*status)[close + 2] : 'Z';
  if (state == 'Z' || state == 'X') return std::nullopt;
  return status->substr(open + 1, close - open - 1);
}

std::vector<std::string> ArgumentsOf(pid_t pid) {
  std::vector<std::string> arguments;
  const auto text = zarncore::ReadWhole(ProcFile(pid, "cmdline").c_str());
  if (!text) return arguments;
  for (std::size_t at = 0; at < text->size();) {
    arguments.emplace_back(text->c_str() + at);
    at += arguments.back().size() + 1;
  }
  return arguments;
}

std::vector<pid_t> AllPids() {
  std::vector<pid_t> pids;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), ::closedir);
  if (!folder) return pids;
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (error == std::errc() && end == name.data() + name.size()) pids.push_back(pid);
  }
  return pids;
}

// The kernel cuts names: a longer one shows whole in the program's path, or in a script's.
bool HasName(pid_t pid, std::string_view name) {
  const auto kernelName = NameOf(pid);
  if (!kernelName || *kernelName != name.substr(0, kKernelNameLength)) return false;
  if (name.size() <= kKernelNameLength) return true;
  const auto arguments = ArgumentsOf(pid);
  const auto last = std::min<std::size_t>(arguments.size(), 2);
  return std::any_of(arguments.begin(), arguments.begin() + static_cast<std::ptrdiff_t>(last),
                     [&](const std::string& argument) { return BaseName(argument) == name; });
}

// Is the text the arguments from this one on joined by blanks, or their beginning up to the end of
// one?
bool BeginsWith(const std::vector<std::string>& arguments, std::size_t first,
                std::string_view text) {
  std::string joined;
  for (std::size_t i = first; i < arguments.size(); ++i) {
    if (i != first) joined += ' ';
    joined += arguments[i];
    if (joined == text) return true;
    if (joined.size() > text.size()) return false;
  }
  return false;
}

// A script's arguments begin behind its interpreter.
bool HasCommandLine(pid_t pid, std::string_view text) {
  const auto kernelName = NameOf(pid);
  if (!kernelName) return false;
  const auto arguments = ArgumentsOf(pid);
  if (BeginsWith(arguments, 0, text)) return true;
  return arguments.size() > 1 &&
         BaseName(arguments[1]).substr(0, kKernelNameLength) == *kernelName &&
         BeginsWith(arguments, 1, text);
}

std::vector<pid_t> WithCommandLine(std::string_view text) {
  std::vector<pid_t> pids = AllPids();
  std::erase_if(pids, [&](pid_t pid) { return pid == ::getpid() || !HasCommandLine(pid, text); });
  return pids;
}

void SignalAll(const std::vector<pid_t>& pids, int signal) {
  for (const pid_t pid : pids)
    static_cast<void>(::kill(pid, signal));  // it may have ended by itself
}

// Waits until the processes have ended or run something else, and forgets those. True when none is
// left.
bool WaitForEnd(std::vector<pid_t>* pids, std::string_view commandLine, int milliseconds) {
  constexpr int kStep = 20;
  for (int waited = 0;; waited += kStep) {
    std::erase_if(*pids, [&](pid_t pid) { return !HasCommandLine(pid, commandLine); });
    if (pids->empty()) return true;
    if (waited >= milliseconds) return false;
    ::poll(nullptr, 0, kStep);
  }
}

}  // namespace

int KOPACPs(const char* szName, char* /*szBuf*/, size_t /*cbBuf*/) try {
  if (szName == nullptr || *szName == '\0') return -1;
  const std::vector<pid_t> pids = AllPids();
  if (pids.empty()) return -1;
  return static_cast<int>(
      std::count_if(pids.begin(), pids.end(), [&](pid_t pid) { return HasName(pid, szName); }));
} catch (...) {
  return -1;
}

int KOPACReadPidFile(const char* szPath) try {
  const auto text = szPath != nullptr ? zarncore::ReadWhole(szPath) : std::nullopt;
  if (!text) return -1;
  const int pid = std::atoi(text->c_str());
  return pid > 0 ? pid : -1;
} catch (...) {
  return -1;
}

int KOPACIsProcAlive(const char* szCmdline) try {
  if (szCmdline == nullptr || *szCmdline == '\0') return -1;
  return WithCommandLine(szCmdline).empty() ? 0 : 1;
} catch (...) {
  return -1;
}

int KOPACKill(const char* szCmdline, int blWait) try {
  if (szCmdline == nullptr || *szCmdline == '\0') return -1;
  std::vector<pid_t> pids = WithCommandLine(szCmdline);
  SignalAll(pids, SIGTERM);
  if (blWait == 0 || WaitForEnd(&pids, szCmdline, kPatienceMilliseconds)) return 0;
  SignalAll(pids, SIGKILL);
  static_cast<void>(
      WaitForEnd(&pids, szCmdline, kEndMilliseconds));  // nothing more can be done to it
  return 0;
} catch (...) {
  return -1;
}

int KOPACProcGetByPid(int pid, char* szName, size_t cbName) try {
  if (pid <= 0 || szName == nullptr || cbName == 0) return -1;
  const auto name = NameOf(pid);
  if (!name) return -1;
  const std::size_t length = std::min(name->size(), cbName - 1);
  std::memcpy(szName, name->data(), length);
  szName[length] = '\0';
  return 0;
} catch (...) {
  return -1;
}
