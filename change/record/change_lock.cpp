// SPDX-License-Identifier: Apache-2.0
// The lock file is root's alone, so that nobody else can hold it; who holds it stands in a file
// beside it that all may read.
#include "record/change_lock.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "record/deadline.h"
#include "record/whole_file.h"

namespace change {
namespace {

constexpr char kFolder[] = "/run/zarnnet";
constexpr char kLock[] = "/run/zarnnet/change.lock";
constexpr char kHolder[] = "/run/zarnnet/change.holder";

bool Take(int fd) {
  struct flock whole {};
  whole.l_type = F_WRLCK;
  return ::fcntl(fd, F_OFD_SETLK, &whole) == 0;
}

void Sign(const std::string& program) {
  constexpr mode_t kReadable = 0644;
  const Json holder{{"program", program}, {"pid", ::getpid()}, {"since", WallTime()}};
  // Without it a waiter is told less, and nothing else is amiss.
  static_cast<void>(WriteWhole(
      kHolder,
      {holder.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n", kReadable, 0, 0, {}}));
}

}  // namespace

// What is thrown on the way lets go of the lock: the other constructor has ended.
ChangeLock::ChangeLock(const std::string& program, long seconds) : ChangeLock() {
  constexpr auto kPause = std::chrono::milliseconds(20);
  // A watcher only looks: who waits for nothing else is not told of it.
  constexpr std::chrono::milliseconds kLook{500};
  ::mkdir(kFolder, 0755);
  fd_ = ::open(kLock, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd_ < 0) return;
  const auto end = std::chrono::steady_clock::now() +
                   std::max<std::chrono::milliseconds>(std::chrono::seconds(seconds), kLook);
  while (!(held_ = Take(fd_)) && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(kPause);
  if (held_) Sign(program);
}

ChangeLock::~ChangeLock() {
  if (held_) ::unlink(kHolder);
  if (fd_ >= 0) ::close(fd_);
}

Json ChangeLock::Holder() {
  const auto file = ReadWhole(kHolder);
  const Json holder = Json::parse(file ? file->bytes : "", nullptr, false);
  return holder.is_object() ? holder : Json::object();
}

}  // namespace change
