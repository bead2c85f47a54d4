// SPDX-License-Identifier: Apache-2.0
// Signals that would end the process wait until a change has come to its end.
#pragma once

#include <csignal>
#include <pthread.h>

namespace change {

class SignalsHeldOff {
 public:
  SignalsHeldOff() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
      ::sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
  }
  ~SignalsHeldOff() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeldOff(const SignalsHeldOff&) = delete;
  SignalsHeldOff& operator=(const SignalsHeldOff&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace change
