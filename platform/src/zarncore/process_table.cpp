// SPDX-License-Identifier: Apache-2.0
// Which programs run, and ending them: by name, by command line, by process id.
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include <zarncore/zarncore.h>

#include "common/clock.h"
#include "common/error.h"
#include "common/text.h"
#include "folder.h"
#include "whole_file.h"

namespace {

using platform::Code;
using platform::CodeOf;
using platform::Fail;

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
  const zarncore::WholeFile file = zarncore::ReadWhole(ProcFile(pid, "stat").c_str());
  if (!file) return std::nullopt;
  const std::string& status = file.text;
  const std::size_t open = status.find('(');
  const std::size_t close = status.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return std::nullopt;
  const char state = close + 2 < status.size() ? status[close + 2] : 'Z';
  if (state == 'Z' || state == 'X') return std::nullopt;
  return status.substr(open + 1, close - open - 1);
}

std::vector<std::string> ArgumentsOf(pid_t pid) {
  std::vector<std::string> arguments;
  const zarncore::WholeFile file = zarncore::ReadWhole(ProcFile(pid, "cmdline").c_str());
  for (std::size_t at = 0; at < file.text.size();) {
    arguments.emplace_back(file.text.c_str() + at);
    at += arguments.back().size() + 1;
  }
  return arguments;
}

// The processes that are asked for; nothing where none can be told, which sets the error state.
template <class Wanted>
std::optional<std::vector<pid_t>> Pids(Wanted wanted) {
  std::vector<pid_t> pids;
  const Code failure = zarncore::VisitFolder("/proc", [&](std::string_view name) {
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (error == std::errc() && end == name.data() + name.size()) pids.push_back(pid);
  });
  if (failure != Code::kNone) {
    Fail(failure);
    return std::nullopt;
  }
  std::erase_if(pids, [&](pid_t pid) { return !wanted(pid); });
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

std::optional<std::vector<pid_t>> WithCommandLine(std::string_view text) {
  return Pids([&](pid_t pid) { return pid != ::getpid() && HasCommandLine(pid, text); });
}

void SignalAll(const std::vector<pid_t>& pids, int signal) {
  for (const pid_t pid : pids)
    static_cast<void>(::kill(pid, signal));  // it may have ended by itself
}

// Waits until the processes have ended or run something else, and forgets those. True when none is
// left.
bool WaitForEnd(std::vector<pid_t>* pids, std::string_view commandLine, int milliseconds) {
  constexpr int kStep = 20;
  const std::int64_t deadline =
      platform::NowNanoseconds() + milliseconds * platform::kNanosecondsPerMillisecond;
  for (;;) {
    std::erase_if(*pids, [&](pid_t pid) { return !HasCommandLine(pid, commandLine); });
    if (pids->empty()) return true;
    if (platform::NowNanoseconds() >= deadline) return false;
    ::poll(nullptr, 0, kStep);
  }
}

}  // namespace

int KOPACPs(const char* szName, char* /*szBuf*/, size_t /*cbBuf*/) try {
  if (szName == nullptr || *szName == '\0') return Fail(Code::kArgument);
  const auto pids = Pids([&](pid_t pid) { return HasName(pid, szName); });
  return pids ? static_cast<int>(pids->size()) : -1;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACReadPidFile(const char* szPath) try {
  if (szPath == nullptr) return Fail(Code::kArgument);
  const zarncore::WholeFile file = zarncore::ReadWhole(szPath);
  if (!file) return Fail(file.error);
  const int pid = std::atoi(file.text.c_str());
  return pid > 0 ? pid : Fail(Code::kContent);
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACIsProcAlive(const char* szCmdline) try {
  if (szCmdline == nullptr || *szCmdline == '\0') return Fail(Code::kArgument);
  const auto pids = WithCommandLine(szCmdline);
  if (!pids) return -1;
  return pids->empty() ? 0 : 1;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACKill(const char* szCmdline, int blWait) try {
  if (szCmdline == nullptr || *szCmdline == '\0') return Fail(Code::kArgument);
  auto pids = WithCommandLine(szCmdline);
  if (!pids) return -1;
  SignalAll(*pids, SIGTERM);
  if (blWait == 0 || WaitForEnd(&*pids, szCmdline, kPatienceMilliseconds)) return 0;
  SignalAll(*pids, SIGKILL);
  // Nothing more can be done to it.
  static_cast<void>(WaitForEnd(&*pids, szCmdline, kEndMilliseconds));
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACProcGetByPid(int pid, char* szName, size_t cbName) try {
  if (pid <= 0 || szName == nullptr || cbName == 0) return Fail(Code::kArgument);
  const auto name = NameOf(pid);
  if (!name) return Fail(CodeOf(Code::kOpen));
  platform::CopyCut(*name, szName, cbName);
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}
