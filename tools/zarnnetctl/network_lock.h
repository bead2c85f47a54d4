// SPDX-License-Identifier: Apache-2.0
// The network configuration, held for a change while this object lives. The library's readers take
// the same lock inside; that nests within a thread.
#pragma once

#include <string>

#include <zarncore/zarncore.h>

#include "failure.h"

namespace tool {

class NetworkLock {
 public:
  // Waits for at most 5 seconds, then throws.
  explicit NetworkLock(const std::string& what) {
    if (KOPACFileLock(kExclusive, kWaitSeconds) != 0) {
      throw Failure(what, ZARNNETERR_LOCK, ReasonOf(ZARNNETERR_LOCK));
    }
  }
  ~NetworkLock() { KOPACFileUnlock(kClass); }
  NetworkLock(const NetworkLock&) = delete;
  NetworkLock& operator=(const NetworkLock&) = delete;

 private:
  static constexpr int kClass = 0x100;
  static constexpr int kExclusive = 0x106;
  static constexpr int kWaitSeconds = 5;
};

}  // namespace tool
