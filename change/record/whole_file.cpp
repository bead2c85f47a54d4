// SPDX-License-Identifier: Apache-2.0
// Files that are kept and put back.
#include "record/whole_file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "frame/model/paths.h"
#include "record/folder.h"

namespace change {
namespace {

constexpr char kUnique[] = "XXXXXX";

// Where new content stands until it takes its place: under a name that no reader takes for a file
// of his. Of the relay's folder every file is an interface's.
std::string TemporaryOf(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  const std::string folder = path.substr(0, name);
  const bool relay = folder == frame::paths::kPppoeRelayFolder;
  return (relay ? frame::paths::PppoeRelayTemporary(path.substr(name))
                : folder + "." + path.substr(name)) +
         ".kept-";
}

// One writer of these at a time, by the lock of changes: what is there was left by a kill.
void RemoveLeftOvers(const std::string& temporary) {
  const std::filesystem::path like(temporary);
  const std::string prefix = like.filename();
  // What stays for now goes before the next writing.
  static_cast<void>(EachNameIn(like.parent_path(), [&](const std::string& name) {
    if (name.starts_with(prefix) && name.size() == prefix.size() + sizeof kUnique - 1)
      ::unlink((like.parent_path() / name).c_str());
  }));
}

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] bool IsOpen() const { return fd_ >= 0; }
  [[nodiscard]] int Get() const { return fd_; }

 private:
  int fd_;
};

// Removed when its scope ends, unless it has taken its place.
class Temporary {
 public:
  explicit Temporary(const std::string& name)
      : name_(name + kUnique), descriptor_(::mkostemp(name_.data(), O_CLOEXEC)) {}
  ~Temporary() {
    const int reason = errno;  // of the failure, for who reports it
    if (descriptor_.IsOpen() && !placed_) ::unlink(name_.c_str());
    errno = reason;
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  [[nodiscard]] const Descriptor& File() const { return descriptor_; }
  bool TakePlaceOf(const std::string& path) {
    placed_ = ::rename(name_.c_str(), path.c_str()) == 0;
    return placed_;
  }

 private:
  std::string name_;
  Descriptor descriptor_;
  bool placed_ = false;
};

std::string AttributeOf(int fd, const std::string& name) {
  const ssize_t size = ::fgetxattr(fd, name.c_str(), nullptr, 0);
  std::string value(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  const ssize_t read = ::fgetxattr(fd, name.c_str(), value.data(), value.size());
  value.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
  return value;
}

std::map<std::string, std::string> AttributesOf(int fd) {
  std::map<std::string, std::string> attributes;
  std::array<char, 4096> names{};
  const ssize_t length = ::flistxattr(fd, names.data(), names.size());
  for (ssize_t at = 0; at < length;) {
    const std::string name(names.data() + at);
    attributes[name] = AttributeOf(fd, name);
    at += static_cast<ssize_t>(name.size()) + 1;
  }
  return attributes;
}

// What another user may not read is not there for him.
bool IsNone(int reason) {
  return reason == ENOENT || reason == ENOTDIR || reason == ELOOP || reason == EACCES ||
         reason == ENXIO;
}

void NoteUnreadable(const std::string& path, std::string* problem) {
  const int reason = errno;
  if (problem != nullptr && !IsNone(reason))
    *problem = path + " cannot be read: " + std::generic_category().message(reason);
}

bool ReadAll(int fd, std::string* bytes) {
  std::array<char, 16384> block{};
  for (;;) {
    const ssize_t length = ::read(fd, block.data(), block.size());
    if (length < 0) return false;
    if (length == 0) return true;
    bytes->append(block.data(), static_cast<std::size_t>(length));
  }
}

bool WriteAll(int fd, const std::string& bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t length = ::write(fd, bytes.data() + at, bytes.size() - at);
    if (length < 0) return false;
    at += static_cast<std::size_t>(length);
  }
  return true;
}

bool WriteTo(int fd, const WholeFile& file) {
  if (!WriteAll(fd, file.bytes) || ::fchown(fd, file.owner, file.group) != 0) return false;
  for (const auto& [name, value] : file.attributes) {
    if (::fsetxattr(fd, name.c_str(), value.data(), value.size(), 0) != 0) return false;
  }
  return ::fchmod(fd, file.mode) == 0 && ::fsync(fd) == 0;
}

void SyncFolderOf(const std::string& path) {
  const Descriptor folder(
      ::open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // The new content is in place, and could not be taken back.
  if (folder.IsOpen()) static_cast<void>(::fsync(folder.Get()));
}

}  // namespace

std::optional<WholeFile> ReadWhole(const std::string& path, std::string* problem) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    NoteUnreadable(path, problem);
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  WholeFile whole;
  constexpr mode_t kPermissions = 07777;
  whole.mode = status.st_mode & kPermissions;
  whole.owner = status.st_uid;
  whole.group = status.st_gid;
  whole.attributes = AttributesOf(file.Get());
  if (ReadAll(file.Get(), &whole.bytes)) return whole;
  NoteUnreadable(path, problem);
  return std::nullopt;
}

bool WriteWhole(const std::string& path, const WholeFile& file) {
  const std::string name = TemporaryOf(path);
  RemoveLeftOvers(name);
  Temporary temporary(name);
  if (!temporary.File().IsOpen() || !WriteTo(temporary.File().Get(), file)) return false;
  if (!temporary.TakePlaceOf(path)) return false;
  SyncFolderOf(path);
  return true;
}

}  // namespace change
