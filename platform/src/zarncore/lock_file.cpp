// Lock files under /run/lock/zarncore/: open-file-description locks with waiters that cost next to nothing.
#include "lock_file.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <set>

namespace zarncore {
namespace {

constexpr char kFolder[] = "/run/lock/zarncore";
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
// How long a waiter sleeps before it looks whether the holder has died.
constexpr std::int64_t kFirstNap = 10'000'000;
constexpr std::int64_t kLongestNap = 100'000'000;

std::int64_t Now() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

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

// The descriptors of all open lock files, so that a forked child can close its copies: as long as it kept one,
// the parent's lock would outlive the parent.
class OpenLocks {
 public:
  static OpenLocks& Instance() {
    static auto* const locks = new OpenLocks;  // outlives every thread's lock files
    return *locks;
  }
  void Add(int fd) {
    const std::lock_guard guard(mutex_);
    fds_.insert(fd);
  }
  void Remove(int fd) {
    const std::lock_guard guard(mutex_);
    fds_.erase(fd);
  }
  [[nodiscard]] unsigned Generation() const { return generation_; }

 private:
  OpenLocks() {
    ::pthread_atfork([] { Instance().mutex_.lock(); }, [] { Instance().mutex_.unlock(); },
                     [] { Instance().CloseInChild(); });
  }
  void CloseInChild() {
    for (const int fd : fds_) ::close(fd);
    fds_.clear();
    ++generation_;
    mutex_.unlock();
  }

  std::mutex mutex_;
  std::set<int> fds_;
  unsigned generation_ = 0;
};

}  // namespace

struct LockFile::Page {
  std::atomic<std::uint32_t> releases;  // counts, so that a waiter never sleeps through one
  std::atomic<std::uint32_t> waiters;
};

LockFile::LockFile(const std::string& name)
    : fd_(OpenLockFile(name)), generation_(OpenLocks::Instance().Generation()) {
  if (!fd_) return;
  OpenLocks::Instance().Add(fd_.Get());
  constexpr off_t kSize = sizeof(Page);
  struct stat status {};
  if (::fstat(fd_.Get(), &status) != 0) return;
  // Room is taken now: a mapped hole on a full disk would end the process when it is written to.
  if (status.st_size < kSize && ::posix_fallocate(fd_.Get(), 0, kSize) != 0) return;
  void* const page = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd_.Get(), 0);
  if (page != MAP_FAILED) page_ = static_cast<Page*>(page);
}

LockFile::LockFile(LockFile&& other) noexcept
    : fd_(std::move(other.fd_)),
      page_(std::exchange(other.page_, nullptr)),
      generation_(other.generation_) {}

LockFile::~LockFile() {
  if (page_ != nullptr) ::munmap(page_, sizeof(Page));
  if (!fd_) return;
  if (generation_ == OpenLocks::Instance().Generation()) {
    OpenLocks::Instance().Remove(fd_.Get());
  } else {
    static_cast<void>(fd_.Release());  // closed when the child was forked; the number may be another's now
  }
}

bool LockFile::IsOpen() const {
  return fd_ && generation_ == OpenLocks::Instance().Generation();
}

bool LockFile::TryTake(LockMode mode) const {
  struct flock range {};
  range.l_type = mode == LockMode::kExclusive ? F_WRLCK : F_RDLCK;
  range.l_whence = SEEK_SET;
  while (::fcntl(fd_.Get(), F_OFD_SETLK, &range) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

bool LockFile::Take(LockMode mode, int waitSeconds) {
  if (!IsOpen()) return false;
  if (TryTake(mode)) return true;
  const std::int64_t deadline = Now() + waitSeconds * kNanosecondsPerSecond;
  std::int64_t nap = kFirstNap;
  if (page_ != nullptr) page_->waiters.fetch_add(1);
  bool taken = false;
  for (;;) {
    const std::uint32_t seen = page_ != nullptr ? page_->releases.load() : 0;
    taken = TryTake(mode);
    const std::int64_t left = deadline - Now();
    if (taken || left <= 0) break;
    Nap(seen, std::min(nap, left));
    nap = std::min(nap * 2, kLongestNap);
  }
  if (page_ != nullptr) page_->waiters.fetch_sub(1);
  return taken;
}

// Ends early when somebody lets go. Woken, timed out or interrupted: the caller looks again in any case.
void LockFile::Nap(std::uint32_t seen, std::int64_t nanoseconds) {
  const timespec limit{nanoseconds / kNanosecondsPerSecond, nanoseconds % kNanosecondsPerSecond};
  if (page_ != nullptr) {
    static_cast<void>(::syscall(SYS_futex, &page_->releases, FUTEX_WAIT, seen, &limit, nullptr, 0));
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
  if (page_ == nullptr) return;
  page_->releases.fetch_add(1);
  // A waiter that was killed leaves the count too high: at worst a wake-up that nobody hears.
  if (page_->waiters.load() == 0) return;
  static_cast<void>(::syscall(SYS_futex, &page_->releases, FUTEX_WAKE, INT32_MAX, nullptr, nullptr, 0));
}

std::string LockNameOf(const char* kind, const std::string& path) {
  // Two paths that share a hash share a lock, which costs time and nothing else.
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : path) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  char name[64];
  std::snprintf(name, sizeof name, "%s-%016llx", kind, static_cast<unsigned long long>(hash));
  return name;
}

}  // namespace zarncore
