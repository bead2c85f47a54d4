// SPDX-License-Identifier: Apache-2.0
// The network configuration as the library locks it: its readers and setters take it inside, which
// nests.
#pragma once

#include <algorithm>
#include <string>

#include <zarncore/zarncore.h>

namespace change {

class NetworkLock {
 public:
  explicit NetworkLock(long seconds)
      : held_(KOPACFileLock(kExclusive, static_cast<int>(std::max(seconds, 1L))) == 0) {}
  ~NetworkLock() {
    if (held_) KOPACFileUnlock(kClass);
  }
  NetworkLock(const NetworkLock&) = delete;
  NetworkLock& operator=(const NetworkLock&) = delete;
  [[nodiscard]] bool IsHeld() const { return held_; }
  // Who has it, as a sentence.
  static std::string HolderSentence();

 private:
  static constexpr int kClass = 0x100;
  static constexpr int kExclusive = 0x106;
  bool held_;
};

}  // namespace change
