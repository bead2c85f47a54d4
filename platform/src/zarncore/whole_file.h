// SPDX-License-Identifier: Apache-2.0
// Reading a file whole, and replacing one: the only way in which this library rewrites files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

#include "common/error.h"
#include "lock_file.h"

namespace zarncore {

struct WholeFile {
  std::string text;
  struct stat status = {};
  platform::Code error = platform::Code::kNone;  // of the attempt to read it; errno says more

  explicit operator bool() const { return error == platform::Code::kNone; }
};

// Never waits for what is no file (a pipe in a shared folder), and refuses it.
[[nodiscard]] WholeFile ReadWhole(const char* path);

// Makes new names in a folder last through a power cut.
void SyncFolder(const std::string& folder);

// The mode of a file that an edit makes; or that there must be one.
inline constexpr mode_t kNewFileMode = 0644;
inline constexpr mode_t kMustExist = 0;

// This thread's last lock file, which stays open for its next edit: opening costs more than
// locking.
struct SpareLock {
  std::string name;
  LockFile file;
};

// A file about to be changed: holds the lock that keeps other writers of the same file out, between
// processes and threads alike, and puts the new content in place at once. The lock is a file of its
// own: the data file is replaced by a rename, which would leave waiters with the old one.
class FileEdit {
 public:
  // Follows a symbolic link, so that the file behind it is replaced and the link stays.
  explicit FileEdit(const char* path, mode_t newMode = kNewFileMode);
  ~FileEdit();
  FileEdit(const FileEdit&) = delete;
  FileEdit& operator=(const FileEdit&) = delete;

  // Why there is nothing to edit: the lock was not to be had, the file cannot be read, or must be
  // there and is not.
  [[nodiscard]] platform::Code Error() const { return error_; }
  [[nodiscard]] bool IsNew() const { return isNew_; }
  [[nodiscard]] std::string_view Content() const { return file_.text; }

  // Writes the content beside the file, with its mode and owner, syncs it, renames it over the file
  // and syncs the folder. Content that equals the present one is not written. Once it is in place
  // the edit has succeeded: a folder that cannot be synced takes nothing back.
  [[nodiscard]] platform::Code Replace(std::string_view content);

 private:
  [[nodiscard]] platform::Code Load();
  [[nodiscard]] platform::Code Lock();
  [[nodiscard]] bool SetModeAndOwner(int fd) const;

  mode_t newMode_;
  std::optional<SpareLock>* spare_;  // this thread's
  std::optional<SpareLock> lock_;
  std::string path_;
  WholeFile file_;
  bool isNew_ = false;
  platform::Code error_;
};

}  // namespace zarncore
