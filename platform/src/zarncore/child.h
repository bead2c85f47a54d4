// How every program of this library starts: default signals, none blocked, and no descriptor of the
// caller's.
#pragma once

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace zarncore {

// What a caller without a PATH lends its programs, as they look for others.
inline constexpr char kDefaultPath[] = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";

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
  [[nodiscard]] pid_t Start(const char* path, const char* const argv[], char* const environment[]) {
    pid_t child = -1;
    if (error_ == 0) {
      error_ = ::posix_spawn(&child, path, &actions_, &attributes_, const_cast<char* const*>(argv),
                             environment);
    }
    if (error_ == 0) return child;
    errno = error_;
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

}  // namespace zarncore
