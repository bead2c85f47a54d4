// SPDX-License-Identifier: Apache-2.0
#include "new_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "failure.h"

namespace tool {
namespace {

Failure CannotWrite(const std::string& path, const std::string& reason) {
  return {"cannot write " + path, std::nullopt, reason};
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int Number() const { return number_; }
  bool Close() {
    const int number = number_;
    number_ = -1;
    return number < 0 || ::close(number) == 0;
  }

 private:
  int number_;
};

// Beside the file that it becomes; gone unless it became it.
class Temporary {
 public:
  explicit Temporary(const std::string& path)
      : path_(FolderOf(path) + "/.zarnnet-XXXXXX"),
        file_(::mkostemp(path_.data(), O_CLOEXEC)),  // made exclusively, with mode 0600
        there_(file_.Number() >= 0) {}
  ~Temporary() {
    if (there_) ::unlink(path_.c_str());
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  bool Write(const std::string& text) {
    for (std::size_t written = 0; written < text.size();) {
      const ssize_t count = ::write(file_.Number(), text.data() + written, text.size() - written);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return false;
      written += static_cast<std::size_t>(count);
    }
    return ::fsync(file_.Number()) == 0 && file_.Close();
  }

  bool Become(const std::string& path) {
    there_ = ::rename(path_.c_str(), path.c_str()) != 0;
    return !there_;
  }

 private:
  std::string path_;
  Descriptor file_;
  bool there_;
};

}  // namespace

void RequirePlaceFor(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
    throw CannotWrite(path, "something else than a regular file is there");
  if (::access(FolderOf(path).c_str(), W_OK | X_OK) != 0)
    throw CannotWrite(path, FolderOf(path) + ": " + std::strerror(errno));
}

void WriteNewFile(const std::string& path, const std::string& text) {
  RequirePlaceFor(path);
  Temporary file(path);
  if (!file.Write(text) || !file.Become(path)) throw CannotWrite(path, std::strerror(errno));
  // The file is whole either way; this only has the name last through a power cut.
  const Descriptor folder(::open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.Number() >= 0) ::fsync(folder.Number());
}

}  // namespace tool
