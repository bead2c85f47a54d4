// SPDX-License-Identifier: Apache-2.0
// The appliance's locks: by class, nested within a thread; and on one named file.
#include <cstdio>
#include <map>
#include <string>
#include <utility>

#include <zarncore/zarncore.h>

#include "common/error.h"
#include "lock_file.h"
#include "per_thread.h"

using platform::Code;
using platform::Fail;
using zarncore::LockFile;
using zarncore::LockMode;

namespace {

constexpr int kModeMask = 0xFF;
constexpr int kShared = 5;
constexpr int kExclusive = 6;

// One class as this thread holds it. The lock file stays open for the next time.
struct Held {
  LockFile file;
  int depth = 0;
  bool exclusive = false;
};
using Classes = std::map<int, Held>;

Classes& ThisThreadsClasses() {
  static auto* const classes = new zarncore::PerThread<Classes>;
  return classes->Get();
}

std::string NameOf(int lockClass) {
  char name[32];
  std::snprintf(name, sizeof name, "class-%x", static_cast<unsigned>(lockClass));
  return name;
}

// A forked child starts with nothing held, whatever its parent held.
Held* Find(Classes& classes, int lockClass) {
  const auto found = classes.find(lockClass);
  if (found == classes.end()) return nullptr;
  if (found->second.file.IsOpen()) return &found->second;
  classes.erase(found);
  return nullptr;
}

Held& FindOrOpen(Classes& classes, int lockClass) {
  if (Held* const held = Find(classes, lockClass)) return *held;
  return classes.emplace(lockClass, Held{LockFile(NameOf(lockClass))}).first->second;
}

}  // namespace

struct KOPACFILELOCK {
  LockFile file;
};

// A thread that holds the class shared and asks for it exclusively waits for the other readers; it
// keeps its shared hold when it runs out of time. It stays exclusive until the outermost release.
int KOPACFileLock(int classAndMode, int cWaitSeconds) try {
  const int mode = classAndMode & kModeMask;
  if (mode != kShared && mode != kExclusive) return Fail(Code::kArgument);
  Held& held = FindOrOpen(ThisThreadsClasses(), classAndMode & ~kModeMask);
  const bool exclusive = mode == kExclusive;
  if (held.depth == 0 || (exclusive && !held.exclusive)) {
    if (!held.file.Take(exclusive ? LockMode::kExclusive : LockMode::kShared, cWaitSeconds))
      return Fail(Code::kLock);
    held.exclusive = exclusive;
  }
  ++held.depth;
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileUnlock(int lockClass) try {
  Held* const held = Find(ThisThreadsClasses(), lockClass & ~kModeMask);
  if (held == nullptr || held->depth == 0) return Fail(Code::kLock);
  if (--held->depth == 0) held->file.Release();
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileLockTimeByFile(const char* szPath, int mode, int cSeconds,
                            PKOPACFILELOCK* ppLock) try {
  if (szPath == nullptr || *szPath == '\0' || ppLock == nullptr) return Fail(Code::kArgument);
  LockFile file(zarncore::PathLockName(szPath));
  if (!file.Take(mode == 1 ? LockMode::kExclusive : LockMode::kShared, cSeconds))
    return Fail(Code::kLock);
  *ppLock = new KOPACFILELOCK{std::move(file)};
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileUnlockByFile(PKOPACFILELOCK pLock) {
  if (pLock == nullptr) return Fail(Code::kArgument);
  const bool held = pLock->file.IsOpen();  // not in a forked child
  delete pLock;
  return held ? 1 : Fail(Code::kLock);
}
