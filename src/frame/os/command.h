// SPDX-License-Identifier: Apache-2.0
// Running the system's programs: an absolute path and a list of arguments, waited for. There is no
// shell anywhere, and arguments are never joined.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <zarncore/zarncore.h>

namespace frame {

namespace internal {
// The core library's option value for "wait, and answer a refusal as a negative result".
inline constexpr int kExecOptions = 187;
inline const char* Argument(const char* text) {
  return text;
}
inline const char* Argument(const std::string& text) {
  return text.c_str();
}
}  // namespace internal

// Runs a program. True when it ended with exit status 0.
template <class... Args>
[[nodiscard]] bool Run(const char* path, const Args&... args) {
  return KOPACExecl(path, internal::kExecOptions, internal::Argument(args)...,
                    static_cast<const char*>(nullptr)) >= 0;
}

// Runs a program with up to four arguments. Its exit status, or -1 when it could not be started or
// was ended by a signal.
template <class... Args>
[[nodiscard]] int RunStatus(const char* path, const Args&... args) {
  const char* const argument[4] = {internal::Argument(args)...};
  return KOPACExec(path, argument[0], argument[1], argument[2], argument[3]);
}

// The same with as many arguments as it takes.
template <class... Args>
[[nodiscard]] int RunVectorStatus(const char* path, const Args&... args) {
  const char* const argv[] = {path, internal::Argument(args)..., nullptr};
  constexpr int kWait = 1;
  return KOPACExecv(path, argv, kWait);
}

// A call whose arguments are put together beforehand: when it has to be made, memory cannot stop
// it.
class PreparedCall {
 public:
  PreparedCall(const char* path, std::vector<std::string> arguments)
      : arguments_(std::move(arguments)), argv_{path} {
    for (const std::string& argument : arguments_)
      argv_.push_back(argument.c_str());
    argv_.push_back(nullptr);
  }
  PreparedCall(const PreparedCall&) = delete;
  PreparedCall& operator=(const PreparedCall&) = delete;

  [[nodiscard]] int Status() const {
    constexpr int kWait = 1;
    return KOPACExecv(argv_.front(), argv_.data(), kWait);
  }

 private:
  std::vector<std::string> arguments_;
  std::vector<const char*> argv_;
};

// The standard output of a program; null when it could not be started. Closing waits for it.
struct CloseCommand {
  void operator()(std::FILE* file) const { KOPACPclose(file); }
};
using CommandOutput = std::unique_ptr<std::FILE, CloseCommand>;

template <class... Args>
[[nodiscard]] CommandOutput OutputOf(const char* path, const Args&... args) {
  return CommandOutput(
      KOPACPopen(path, "r", internal::Argument(args)..., static_cast<const char*>(nullptr)));
}

// ---- processes that run, by name or by the beginning of their command line

// How many processes have this name; nothing when that cannot be told.
inline std::optional<int> CountProcesses(const char* name) {
  char text[256] = "";  // the core library may want to write into it
  const int count = KOPACPs(name, text, sizeof text);
  return count < 0 ? std::nullopt : std::optional(count);
}

[[nodiscard]] inline bool IsRunning(const std::string& commandLine) {
  return KOPACIsProcAlive(commandLine.c_str()) > 0;
}

// Asks them to end and waits for it. True as well when there is none.
[[nodiscard]] inline bool EndProcesses(const std::string& commandLine) {
  constexpr int kWait = 1;
  return KOPACKill(commandLine.c_str(), kWait) >= 0;
}

}  // namespace frame
