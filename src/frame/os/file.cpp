// SPDX-License-Identifier: Apache-2.0
// Owners of open files, and readers of the small files of /proc and /sys.
#include "frame/os/file.h"

#include <cstdlib>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace frame {

bool Exists(const std::string& path) {
  return ::access(path.c_str(), F_OK) == 0;
}

Descriptor OpenFolder(const char* path) {
  return Descriptor(::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool ExistsIn(const Descriptor& folder, const std::string& name) {
  return ::faccessat(folder.Get(), name.c_str(), F_OK, 0) == 0;
}

bool IsInSysfs(const Descriptor& folder) {
  struct statfs status {};
  return ::fstatfs(folder.Get(), &status) == 0 && status.f_type == SYSFS_MAGIC;
}

LineReader::~LineReader() {
  std::free(buffer_);
}

std::optional<std::string_view> LineReader::Next() {
  const ssize_t length = ::getline(&buffer_, &capacity_, file_.get());
  if (length < 0) return std::nullopt;
  return std::string_view(buffer_, static_cast<std::size_t>(length));
}

bool LineReader::Failed() const {
  return std::feof(file_.get()) == 0;
}

std::optional<std::string> BoundedLines::Next() {
  if (!IsOpen() ||
      std::fgets(piece_.data(), static_cast<int>(piece_.size()), file_.get()) == nullptr) {
    return std::nullopt;
  }
  const std::string_view piece = piece_.data();
  return std::string(piece.substr(0, piece.find('\n')));
}

}  // namespace frame
