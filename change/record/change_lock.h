// SPDX-License-Identifier: Apache-2.0
// One change at a time on the machine; who waits is told who is at it.
#pragma once

#include <string>

#include "json.h"

namespace change {

class ChangeLock {
 public:
  // Waits for at most so many seconds.
  ChangeLock(const std::string& program, long seconds);
  ~ChangeLock();
  ChangeLock(const ChangeLock&) = delete;
  ChangeLock& operator=(const ChangeLock&) = delete;

  [[nodiscard]] bool IsHeld() const { return held_; }
  // Who else holds it: "program", "pid", "since"; empty when that cannot be read.
  [[nodiscard]] static Json Holder();

 private:
  ChangeLock() = default;

  int fd_ = -1;
  bool held_ = false;
};

}  // namespace change
