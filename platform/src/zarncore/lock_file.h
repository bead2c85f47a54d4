// SPDX-License-Identifier: Apache-2.0
// Lock files under /run/lock/zarncore/: open-file-description locks with waiters that cost next to
// nothing.
#pragma once

#include <cstdint>
#include <string>

#include "common/descriptor.h"

namespace zarncore {

enum class LockMode { kShared, kExclusive };

// An open lock file. The kernel lets go of the lock when the last copy of its descriptor is closed,
// so also when the process dies; programs that are run get no copy.
//
// A waiter sleeps on a counter in a page of the lock file that all processes map, and is woken by
// whoever lets go. A holder that dies wakes nobody: waiters look again by themselves, ever more
// seldom.
//
// A forked child shares no lock: all lock files are closed in it, and what it inherited answers
// IsOpen() with no. What is still taken is let go with its owner, so that waiters of a thread that
// ends are woken.
class LockFile {
 public:
  // Opens, and if need be makes, the lock file of this name.
  explicit LockFile(const std::string& name);
  ~LockFile();
  LockFile(LockFile&& other) noexcept;
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  [[nodiscard]] bool IsOpen() const;
  // Takes the lock, or changes its mode, within the time limit.
  [[nodiscard]] bool Take(LockMode mode, int waitSeconds);
  void Release();

 private:
  struct Page;
  [[nodiscard]] bool TryTake(LockMode mode);
  void Nap(std::uint32_t seen, std::int64_t nanoseconds);

  platform::Descriptor fd_;
  Page* page_ = nullptr;  // null on a full disk: waiters then look again by the clock alone
  unsigned generation_;   // of the process that opened it
  bool taken_ = false;
};

// The lock file that belongs to a path and to no other.
std::string PathLockName(const std::string& path);

// The lock file that edits of a path wait on. Paths share a few of them, as callers edit files
// under names that never come back; no edit takes a second lock, so that sharing costs time and
// nothing else.
std::string EditLockName(const std::string& path);

}  // namespace zarncore
