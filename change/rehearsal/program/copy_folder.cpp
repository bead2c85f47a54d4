// SPDX-License-Identifier: Apache-2.0
// The library's files are small; what is large belongs to others.
#include "program/copy_folder.h"

#include <filesystem>
#include <sys/stat.h>

#include "record/whole_file.h"

namespace rehearsal {
namespace {

namespace fs = std::filesystem;

constexpr off_t kLargestFile = 1 << 20;
constexpr off_t kMostBytes = 64 << 20;
constexpr int kMostEntries = 8000;

class Copier {
 public:
  Copier(fs::path from, fs::path to) : from_(std::move(from)), to_(std::move(to)) {}

  bool CopyAll() {
    struct stat root {};
    if (::lstat(from_.c_str(), &root) != 0) return false;
    std::error_code none;
    constexpr auto kOptions = fs::directory_options::skip_permission_denied;
    for (auto it = fs::recursive_directory_iterator(from_, kOptions, none);
         it != fs::end(it) && entries_ < kMostEntries; it.increment(none)) {
      struct stat status {};
      if (::lstat(it->path().c_str(), &status) != 0) continue;
      const bool elsewhere = status.st_dev != root.st_dev;
      if (elsewhere) it.disable_recursion_pending();
      ++entries_;
      Copy(it->path(), status);
    }
    return !left_ && entries_ < kMostEntries;
  }

 private:
  void Copy(const fs::path& path, const struct stat& status) {
    const fs::path target = to_ / path.lexically_relative(from_);
    std::error_code none;
    if (S_ISDIR(status.st_mode)) {
      fs::create_directory(target, none);
      ::chmod(target.c_str(), status.st_mode & 07777);
    } else if (S_ISLNK(status.st_mode)) {
      fs::copy_symlink(path, target, none);
    } else if (S_ISREG(status.st_mode)) {
      CopyFile(path, target, status.st_size);
    }
  }

  void CopyFile(const fs::path& path, const fs::path& target, off_t size) {
    bytes_ += size;
    if (size > kLargestFile || bytes_ > kMostBytes) {
      left_ = true;
      return;
    }
    auto file = change::ReadWhole(path);
    if (!file) return;  // one that this user may not read
    file->owner = file->group = 0;
    file->attributes.clear();
    left_ = !change::WriteWhole(target, *file) || left_;
  }

  fs::path from_;
  fs::path to_;
  off_t bytes_ = 0;
  int entries_ = 0;
  bool left_ = false;
};

}  // namespace

bool CopyFolder(const std::string& from, const std::string& to) {
  return Copier(from, to).CopyAll();
}

}  // namespace rehearsal
