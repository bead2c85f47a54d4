// SPDX-License-Identifier: Apache-2.0
// How every program of the platform starts: with the caller's environment, default signals, none
// blocked, and no descriptor of the caller's.
#pragma once

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace platform {

// A program's variables ("NAME=value"): its own, and those of the caller's that are not among them.
class Environment {
 public:
  explicit Environment(std::vector<std::string> own = {}) : own_(std::move(own)) {
    for (std::string& variable : own_)
      variables_.push_back(variable.data());
    // A caller that has cleared its environment has not even an empty list.
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
      if (!IsOwn(NameOf(*variable))) variables_.push_back(*variable);
    }
    // Programs look for others, also those of a caller without a PATH.
    if (!IsOwn("PATH") && ::getenv("PATH") == nullptr) {
      variables_.push_back(const_cast<char*>("PATH=/usr/sbin:/usr/bin:/sbin:/bin"));
    }
    variables_.push_back(nullptr);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

  [[nodiscard]] char* const* Get() const { return variables_.data(); }

 private:
  static std::string_view NameOf(std::string_view variable) {
    return variable.substr(0, variable.find('='));
  }
  [[nodiscard]] bool IsOwn(std::string_view name) const {
    return std::any_of(own_.begin(), own_.end(),
                       [&](const std::string& variable) { return NameOf(variable) == name; });
  }

  std::vector<std::string> own_;
  std::vector<char*> variables_;
};

class ChildSetup {
 public:
  // Input and output are /dev/null; the standard output may be a descriptor above the first three.
  explicit ChildSetup(int output = -1, int moreFlags = 0) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    Open(STDIN_FILENO, O_RDONLY);
    if (output >= 0) {
      Note(::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO));
    } else {
      Open(STDOUT_FILENO, O_WRONLY);
    }
    Open(STDERR_FILENO, O_WRONLY);
    Note(::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1));
    SetSignals();
    ::posix_spawnattr_setflags(&attributes_, static_cast<short>(POSIX_SPAWN_SETSIGMASK |
                                                                POSIX_SPAWN_SETSIGDEF | moreFlags));
  }
  ~ChildSetup() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  ChildSetup(const ChildSetup&) = delete;
  ChildSetup& operator=(const ChildSetup&) = delete;

  // The child's process id, or -1 with errno.
  [[nodiscard]] pid_t Start(const char* path, const char* const argv[],
                            const Environment& environment) const {
    pid_t child = -1;
    int error = error_;
    if (error == 0) {
      error = ::posix_spawn(&child, path, &actions_, &attributes_, const_cast<char* const*>(argv),
                            environment.Get());
    }
    if (error == 0) return child;
    errno = error;
    return -1;
  }

 private:
  void Open(int fd, int mode) {
    Note(::posix_spawn_file_actions_addopen(&actions_, fd, "/dev/null", mode, 0));
  }
  // Out of memory: a program that would start with the caller's descriptors does not start.
  void Note(int error) {
    if (error != 0) error_ = error;
  }
  void SetSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
  }

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
  int error_ = 0;
};

}  // namespace platform
