// SPDX-License-Identifier: Apache-2.0
// The appliance's locks, held while their objects live: lock classes, and locks on one file.
#pragma once

#include <string>
#include <utility>

#include <zarncore/zarncore.h>

#include "frame/base/log.h"

namespace frame {

inline constexpr int kNetworkRead = 0x105;  // interface files, resolver files, routes, host name
inline constexpr int kNetworkWrite = 0x106;
inline constexpr int kSettingsRead = 0x805;
inline constexpr int kSettingsWrite = 0x806;  // /etc/zarninfo.conf
inline constexpr int kServicePlugin = 0x1000006;

// A lock class. Waits at most 5 seconds for it.
class Lock {
 public:
  explicit Lock(int classAndMode)
      : class_(classAndMode & ~0xFF), held_(KOPACFileLock(classAndMode, kWaitSeconds) == 0) {}
  ~Lock() {
    if (held_) KOPACFileUnlock(class_);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  [[nodiscard]] bool Held() const { return held_; }
  // A lock that is not had is 0x0400 and logged in the caller's name, with the failure inside.
  [[nodiscard]] bool HeldOrLog(const Place& at = {}) const;
  // Lets go before the scope ends, for callers that report a release that fails.
  [[nodiscard]] bool Release() {
    return !std::exchange(held_, false) || KOPACFileUnlock(class_) == 0;
  }

 private:
  static constexpr int kWaitSeconds = 5;

  int class_;
  bool held_;
};

inline bool Lock::HeldOrLog(const Place& at) const {
  if (held_) return true;
  const InnerError inner;
  if (class_ == (kSettingsWrite & ~0xFF)) {
    LOG_ERROR_AT(at, "%s:%d Failed to lock zarninfo [0x%04X %s:%d]", inner.code, inner.file,
                 inner.line);
  } else {
    LOG_ERROR_AT(at, "%s:%d KOPACFileLock failed.[0x%04X %s:%d]", inner.code, inner.file,
                 inner.line);
  }
  return Fail(ZARNNETERR_LOCK, false, at);
}

// The exclusive lock on one file, kept apart from the file, which every edit replaces. Waits at
// most 30 seconds.
class FileLock {
 public:
  explicit FileLock(const std::string& path)
      : held_(KOPACFileLockTimeByFile(path.c_str(), kExclusive, kWaitSeconds, &lock_) >= 0) {}
  ~FileLock() { static_cast<void>(Release()); }  // whoever wants to know releases it himself
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  [[nodiscard]] bool Held() const { return held_; }
  // A lock that is not had is 0x0400 and logged in the caller's name.
  [[nodiscard]] bool HeldOrLog(const Place& at = {}) const {
    if (held_) return true;
    LOG_ERROR_AT(at, "%s:%d KOPACFileLockTimeByFile failed!");
    return Fail(ZARNNETERR_LOCK, false, at);
  }
  [[nodiscard]] bool Release() {
    if (!held_) return true;
    held_ = false;
    return KOPACFileUnlockByFile(lock_) == 1;
  }

 private:
  static constexpr int kExclusive = 1;
  static constexpr int kWaitSeconds = 30;

  PKOPACFILELOCK lock_ = nullptr;
  bool held_;
};

}  // namespace frame
