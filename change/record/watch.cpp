// SPDX-License-Identifier: Apache-2.0
// The watcher takes its lock before its starter hears of success, and the kernel takes it back from
// one that died.
#include "record/watch.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "record/programs.h"
#include "record/spawn_attributes.h"

namespace change {
namespace {

constexpr char kProgram[] = "zarnnet-change-watch";

std::string LockOf(long number) {
  return "/run/zarnnet/watch." + std::to_string(number);
}

int StatusOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return status;
}

}  // namespace

bool StartWatcher(long number, std::string* problem) {
  std::string path = OwnProgram(kProgram);
  std::string argument = std::to_string(number);
  std::array<char*, 3> arguments{path.data(), argument.data(), nullptr};
  // Of the caller's environment it needs where libraries are, if that.
  std::string programs = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
  std::vector<char*> environment{programs.data()};
  std::string libraries = "LD_LIBRARY_PATH=";
  if (const char* const value = std::getenv("LD_LIBRARY_PATH")) {
    libraries += value;
    environment.push_back(libraries.data());
  }
  environment.push_back(nullptr);
  const SpawnAttributes attributes(POSIX_SPAWN_SETSID);
  pid_t child = 0;
  const int error = path.empty() ? ENOENT
                                 : ::posix_spawn(&child, path.c_str(), nullptr, attributes.Get(),
                                                 arguments.data(), environment.data());
  // It ends at once: what stays is its own child, which no caller has to wait for.
  if (error == 0 && StatusOf(child) == 0) return true;
  *problem = std::string("cannot start ") + (path.empty() ? kProgram : path) +
             (error != 0 ? std::string(": ") + std::strerror(error) : "");
  return false;
}

bool IsWatched(long number) {
  const int fd = ::open(LockOf(number).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0) return false;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  const bool asked = ::fcntl(fd, F_OFD_GETLK, &lock) == 0;
  ::close(fd);
  return asked && lock.l_type != F_UNLCK;
}

}  // namespace change
