// SPDX-License-Identifier: Apache-2.0
// Child processes of a test, for what only shows between two of them.
#pragma once

#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

// Runs the body in a child; its result is the exit status.
template <class Body>
pid_t Start(Body body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body());
  return child;
}

inline int ExitStatusOf(pid_t child) {
  int status = 0;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline void KillAndReap(pid_t child) {
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

// A one-way signal between parent and child.
class Gate {
 public:
  Gate() { ok_ = ::pipe(ends_) == 0; }
  ~Gate() {
    ::close(ends_[0]);
    ::close(ends_[1]);
  }
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;
  void Open() { ok_ = ::write(ends_[1], "x", 1) == 1; }
  // False when it did not open in ten seconds.
  bool Wait() {
    pollfd ready{ends_[0], POLLIN, 0};
    char byte = 0;
    return ok_ && ::poll(&ready, 1, 10000) == 1 && ::read(ends_[0], &byte, 1) == 1;
  }

 private:
  int ends_[2] = {-1, -1};
  bool ok_ = false;
};

}  // namespace test
