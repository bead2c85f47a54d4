// SPDX-License-Identifier: Apache-2.0
// Files in a folder that everybody may write to.
#include "frame/os/shared_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace frame {
namespace {

// A second name of a file of root's could have been laid there by anybody.
bool IsTrusted(const struct stat& found) {
  return S_ISREG(found.st_mode) && found.st_uid == 0 && found.st_nlink == 1;
}

}  // namespace

bool IsTrustedFile(const std::string& path) {
  struct stat found {};
  return ::lstat(path.c_str(), &found) == 0 && IsTrusted(found);
}

File OpenTrustedFile(const std::string& path) {
  Descriptor fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat found {};
  if (!fd || ::fstat(fd.Get(), &found) != 0) return nullptr;
  if (!IsTrusted(found)) {
    errno = EPERM;
    return nullptr;
  }
  return StreamOf(std::move(fd), "r");
}

bool ClaimFile(const std::string& path) {
  if (IsTrustedFile(path)) return true;
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return false;
  return static_cast<bool>(
      Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode)));
}

}  // namespace frame
