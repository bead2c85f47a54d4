// SPDX-License-Identifier: Apache-2.0
// How the library's own programs start: no signal held off or ignored, whatever the caller does.
#pragma once

#include <csignal>
#include <spawn.h>

namespace change {

class SpawnAttributes {
 public:
  // More flags of posix_spawnattr_setflags().
  explicit SpawnAttributes(int flags = 0) {
    ::posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setflags(
        &attributes_, static_cast<short>(flags | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
  }
  ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  [[nodiscard]] const posix_spawnattr_t* Get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

}  // namespace change
