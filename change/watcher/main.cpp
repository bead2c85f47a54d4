// SPDX-License-Identifier: Apache-2.0
// zarnnet-change-watch NUMBER: stays until the change is confirmed or its time is over, and then
// has it put back. Started by the library of changes; ends with 0 when it watches, in a child of
// its own.
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

namespace {

// Nothing of who started it is held open.
bool LetGo() {
  constexpr unsigned kFirst = 3;
  ::close_range(kFirst, ~0U, 0);
  ::umask(S_IWGRP | S_IWOTH);  // what it starts writes files that others read
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null < 0) return false;
  for (int fd = 0; fd < static_cast<int>(kFirst); ++fd)
    ::dup2(null, fd);
  ::close(null);
  return ::chdir("/") == 0;
}

// Held as long as this process and its child live; the file goes with them.
bool Hold(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  struct flock whole {};
  whole.l_type = F_WRLCK;
  return fd >= 0 && ::fcntl(fd, F_OFD_SETLK, &whole) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 || !LetGo()) return 1;
  const std::string number = argv[1];
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return 1;
  const std::string lock = "/run/zarnnet/watch." + number;
  if (!Hold(lock)) return 1;
  const pid_t child = ::fork();
  if (child != 0) ::_exit(child > 0 ? 0 : 1);
  const std::string options = R"({"program":"zarnnet-change-watch","watch":)" + number + "}";
  const int result = ZARNNetChangeRecover(options.c_str(), nullptr);
  ::unlink(lock.c_str());
  return result;
}
