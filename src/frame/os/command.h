// Running the system's programs: an absolute path and a list of arguments, waited for. There is no
// shell anywhere, and arguments are never joined.
#pragma once

#include <cstdio>
#include <memory>
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

}  // namespace frame
