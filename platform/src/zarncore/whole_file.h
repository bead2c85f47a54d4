// Reading a file whole, and replacing one: the only way in which this library rewrites files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

#include "lock_file.h"

namespace zarncore {

// The content of a file; nothing when it cannot be read (errno says why).
std::optional<std::string> ReadWhole(const char* path);

// Makes renamed and new names in a folder last through a power cut.
[[nodiscard]] bool SyncFolder(const std::string& folder);

// A file about to be changed: holds the lock that keeps other writers of the same file out, between
// processes and threads alike, and puts the new content in place at once. The lock is a file of its
// own: the data file is replaced by a rename, which would leave waiters with the old one.
class FileEdit {
 public:
  // Follows a symbolic link, so that the file behind it is replaced and the link stays.
  explicit FileEdit(const char* path);
  ~FileEdit();
  FileEdit(const FileEdit&) = delete;
  FileEdit& operator=(const FileEdit&) = delete;

  // False when the lock was not to be had or the file exists and cannot be read.
  [[nodiscard]] bool Ready() const { return ready_; }
  [[nodiscard]] bool IsNew() const { return isNew_; }
  [[nodiscard]] std::string_view Content() const { return content_; }

  // Writes the content beside the file, with its mode and owner (0644 for a new one), syncs it,
  // renames it over the file and syncs the folder. Content that equals the present one is not
  // written.
  [[nodiscard]] bool Replace(std::string_view content);

 private:
  [[nodiscard]] bool Load();
  [[nodiscard]] bool WriteTemporary(int fd, std::string_view content) const;

  std::string path_;
  std::string content_;
  struct stat status_ = {};
  std::string lockName_;
  LockFile lock_;
  bool ready_ = false;
  bool isNew_ = false;
};

}  // namespace zarncore
