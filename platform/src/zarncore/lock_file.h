// Lock files under /run/lock/zarncore/: open-file-description locks with waiters that cost next to nothing.
#pragma once

#include <cstdint>
#include <string>

#include "descriptor.h"

namespace zarncore {

enum class LockMode { kShared, kExclusive };

// An open lock file. The kernel lets go of the lock when the last copy of its descriptor is closed, so also when
// the process dies; programs that are run get no copy.
//
// A waiter sleeps on a counter in a page of the lock file that all processes map, and is woken by whoever lets
// go. A holder that dies wakes nobody: waiters look again by themselves, ever more seldom.
//
// A forked child shares no lock: all lock files are closed in it, and what it inherited answers IsOpen() with no.
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
  [[nodiscard]] bool TryTake(LockMode mode) const;
  void Nap(std::uint32_t seen, std::int64_t nanoseconds);

  Descriptor fd_;
  Page* page_ = nullptr;  // null on a full disk: waiters then look again by the clock alone
  unsigned generation_;  // of the process that opened it
};

// The name of the lock file that belongs to a path.
std::string LockNameOf(const char* kind, const std::string& path);

}  // namespace zarncore
