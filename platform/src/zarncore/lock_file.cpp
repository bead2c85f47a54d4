// SPDX-License-Identifier: Apache-2.0
// Lock files under /run/lock/zarncore/: open-file-description locks with waiters that cost next to
// nothing.
#include "lock_file.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <linux/futex.h>
#include <mutex>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <set>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "common/clock.h"

namespace zarncore {
namespace {

constexpr char kFolder[] = "/run/lock/zarncore";
using platform::Descriptor;
using platform::kNanosecondsPerSecond;
using platform::NowNanoseconds;

// How long a waiter sleeps before it looks whether the holder has died.
constexpr std::int64_t kFirstNap = 5'000'000;
constexpr std::int64_t kLongestNap = 20'000'000;

bool MakeFolder() {
  for (const char* path : {"/run", "/run/lock", kFolder}) {
    if (::mkdir(path, 0755) != 0 && errno != EEXIST) return false;
  }
  return true;
}

int OpenLockFile(const std::string& name) {
  const std::string path = std::string(kFolder) + "/" + name;
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW;
  const int fd = ::open(path.c_str(), kFlags, 0600);
  if (fd >= 0 || errno != ENOENT || !MakeFolder()) return fd;
  return ::open(path.c_str(), kFlags, 0600);
}

// The descriptors of all open lock files, so that a forked child can close its copies: as long as
// it kept one, the parent's lock would outlive the parent. Opening and closing are one step with
// their entry here: a fork in between would leave a copy that nobody knows of.
class OpenLocks {
 public:
  static OpenLocks& Instance() {
    static auto* const locks = new OpenLocks;  // outlives every thread's lock files
    return *locks;
  }
  [[nodiscard]] Descriptor Open(const std::string& name) {
    const std::lock_guard guard(mutex_);
    Descriptor fd(OpenLockFile(name));
    if (fd) fds_.insert(fd.Get());
    return fd;
  }
  void Close(Descriptor fd) {
    const std::lock_guard guard(mutex_);
    fds_.erase(fd.Get());
    fd.Close();
  }
  [[nodiscard]] unsigned Generation() const { return generation_; }

 private:
  OpenLocks() {
    if (::pthread_atfork([] { Instance().mutex_.lock(); }, [] { Instance().mutex_.unlock(); },
                         [] { Instance().CloseInChild(); }) != 0) {
      throw std::bad_alloc();
    }
  }
  void CloseInChild() {
    for (const int fd : fds_)
      ::close(fd);
    fds_.clear();
    ++generation_;
    mutex_.unlock();
  }

  std::mutex mutex_;
  std::set<int> fds_;
  unsigned generation_ = 0;
};

// The page of a lock file, or null. It is mapped through a descriptor of its own: a mapping keeps
// what it was made from open, in a forked child too, and the lock with it.
void* MapPage(const std::string& name, std::size_t size) {
  const Descriptor fd(OpenLockFile(name));
  const auto length = static_cast<off_t>(size);
  struct stat status {};
  if (!fd || ::fstat(fd.Get(), &status) != 0) return nullptr;
  // Somebody else's file could be cut short under the mapping, which would end this process.
  if (status.st_uid != 0 && status.st_uid != ::geteuid()) return nullptr;
  // Room is taken now: a mapped hole on a full disk would end the process when it is written to.
  if (status.st_size < length && ::posix_fallocate(fd.Get(), 0, length) != 0) return nullptr;
  void* const page = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd.Get(), 0);
  return page != MAP_FAILED ? page : nullptr;
}

std::uint64_t HashOf(const std::string& path) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : path)
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return hash;
}

}  // namespace

struct LockFile::Page {
  std::atomic<std::uint32_t> releases;  // counts, so that a waiter never sleeps through one
  std::atomic<std::uint32_t> waiters;
};

LockFile::LockFile(const std::string& name)
    : fd_(OpenLocks::Instance().Open(name)), generation_(OpenLocks::Instance().Generation()) {
  if (fd_) page_ = static_cast<Page*>(MapPage(name, sizeof(Page)));
}

LockFile::LockFile(LockFile&& other) noexcept
    : fd_(std::move(other.fd_)),
      page_(std::exchange(other.page_, nullptr)),
      generation_(other.generation_),
      taken_(std::exchange(other.taken_, false)) {}

// In a forked child the descriptor is closed already, and its number may be another file's.
LockFile::~LockFile() {
  if (IsOpen()) {
    if (taken_) Release();
    OpenLocks::Instance().Close(std::move(fd_));
  } else {
    static_cast<void>(fd_.Release());
  }
  if (page_ != nullptr) ::munmap(page_, sizeof(Page));
}

bool LockFile::IsOpen() const {
  return fd_ && generation_ == OpenLocks::Instance().Generation();
}

bool LockFile::TryTake(LockMode mode) {
  struct flock range {};
  range.l_type = mode == LockMode::kExclusive ? F_WRLCK : F_RDLCK;
  range.l_whence = SEEK_SET;
  while (::fcntl(fd_.Get(), F_OFD_SETLK, &range) != 0) {
    if (errno != EINTR) return false;
  }
  taken_ = true;
  return true;
}

bool LockFile::Take(LockMode mode, int waitSeconds) {
  if (!IsOpen()) return false;
  if (TryTake(mode)) return true;
  const std::int64_t deadline = NowNanoseconds() + waitSeconds * kNanosecondsPerSecond;
  std::int64_t nap = kFirstNap;
  if (page_ != nullptr) page_->waiters.fetch_add(1);
  bool taken = false;
  for (;;) {
    const std::uint32_t seen = page_ != nullptr ? page_->releases.load() : 0;
    taken = TryTake(mode);
    const std::int64_t left = deadline - NowNanoseconds();
    if (taken || left <= 0) break;
    Nap(seen, std::min(nap, left));
    nap = std::min(nap * 2, kLongestNap);
  }
  if (page_ != nullptr) page_->waiters.fetch_sub(1);
  return taken;
}

// Ends early when somebody lets go. Woken, timed out or interrupted: the caller looks again in any
// case.
void LockFile::Nap(std::uint32_t seen, std::int64_t nanoseconds) {
  const timespec limit{nanoseconds / kNanosecondsPerSecond,
                       static_cast<long>(nanoseconds % kNanosecondsPerSecond)};
  if (page_ != nullptr) {
    // The bare call takes the kernel's own two numbers, of another size than timespec's on 32 bits.
    const long kernelLimit[] = {static_cast<long>(limit.tv_sec), limit.tv_nsec};
    static_cast<void>(
        ::syscall(SYS_futex, &page_->releases, FUTEX_WAIT, seen, kernelLimit, nullptr, 0));
  } else {
    static_cast<void>(::ppoll(nullptr, 0, &limit, nullptr));
  }
}

void LockFile::Release() {
  struct flock range {};
  range.l_type = F_UNLCK;
  range.l_whence = SEEK_SET;
  // Unlocking what is open cannot fail.
  static_cast<void>(::fcntl(fd_.Get(), F_OFD_SETLK, &range));
  taken_ = false;
  if (page_ == nullptr) return;
  page_->releases.fetch_add(1);
  // A waiter that was killed leaves the count too high: at worst a wake-up that nobody hears.
  if (page_->waiters.load() == 0) return;
  static_cast<void>(
      ::syscall(SYS_futex, &page_->releases, FUTEX_WAKE, INT32_MAX, nullptr, nullptr, 0));
}

std::string PathLockName(const std::string& path) {
  char name[32];
  std::snprintf(name, sizeof name, "file-%016llx", static_cast<unsigned long long>(HashOf(path)));
  return name;
}

std::string EditLockName(const std::string& path) {
  constexpr std::uint64_t kEditLocks = 64;
  char name[32];
  std::snprintf(name, sizeof name, "edit-%02x", static_cast<unsigned>(HashOf(path) % kEditLocks));
  return name;
}

}  // namespace zarncore
