// SPDX-License-Identifier: Apache-2.0
// Reading a file whole, and replacing one: the only way in which this library rewrites files.
#include "whole_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <new>
#include <unistd.h>

#include "common/descriptor.h"
#include "per_thread.h"

namespace zarncore {
namespace {

using platform::Code;
using platform::CodeOf;
using platform::Descriptor;

constexpr int kLockSeconds = 30;

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// Where a path leads when all links on it are followed; nothing where nothing is there or it cannot
// be told.
std::optional<std::string> Real(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  if (real) return real.get();
  if (errno == ENOMEM) throw std::bad_alloc();
  return std::nullopt;
}

// The file behind a path: links are followed, so that they survive the rename and all who edit the
// file wait on one lock. A file that is not there yet has its folder followed.
std::string Resolved(const std::string& path) {
  if (const auto file = Real(path)) return *file;
  const auto folder = Real(FolderOf(path));
  return folder ? *folder + "/" + NameOf(path) : path;
}

// Hidden beside the file: who looks through the folder for files of a kind finds none half written.
// Always the same: whoever has the file's lock may remove what a killed writer left, and finds it
// without a look through the folder.
std::string TemporaryOf(const std::string& path) {
  return FolderOf(path) + "/." + NameOf(path) + ".zarncore-new";
}

bool WriteAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(fd, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Reads to the end; the size is a hint only, the kernel's own files have none. Where it holds,
// there was room for more and nothing more came: that was the end, and needs no second read.
bool ReadAll(int fd, std::size_t sizeHint, std::string* content) {
  content->resize(sizeHint + 1);
  std::size_t used = 0;
  for (;;) {
    if (used == content->size()) content->resize(content->size() * 2 + 4096);
    const ssize_t length = ::read(fd, content->data() + used, content->size() - used);
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) return false;
    used += static_cast<std::size_t>(length);
    if (length == 0 || used == sizeHint) break;
  }
  content->resize(used);
  return true;
}

std::optional<SpareLock>& ThisThreadsSpare() {
  static auto* const spares = new PerThread<std::optional<SpareLock>>;
  return spares->Get();
}

}  // namespace

void SyncFolder(const std::string& folder) {
  const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Its names are in effect already, and stay so: nothing that a caller could do about a failure.
  if (fd) static_cast<void>(::fsync(fd.Get()));
}

WholeFile ReadWhole(const char* path) {
  WholeFile file;
  const Descriptor fd(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!fd || ::fstat(fd.Get(), &file.status) != 0) {
    file.error = CodeOf(Code::kOpen);
  } else if (S_ISFIFO(file.status.st_mode)) {
    errno = ESPIPE;
    file.error = Code::kOpen;
  } else if (!ReadAll(fd.Get(), static_cast<std::size_t>(file.status.st_size), &file.text)) {
    file.error = CodeOf(Code::kRead);
  }
  return file;
}

FileEdit::FileEdit(const char* path, mode_t newMode)
    : newMode_(newMode), spare_(&ThisThreadsSpare()), path_(Resolved(path)), error_(Lock()) {
  if (error_ == Code::kNone) error_ = Load();
}

FileEdit::~FileEdit() {
  if (!lock_ || !lock_->file.IsOpen()) return;
  lock_->file.Release();
  spare_->reset();
  spare_->emplace(std::move(*lock_));
}

Code FileEdit::Lock() {
  std::string name = EditLockName(path_);
  if (*spare_ && (*spare_)->name == name && (*spare_)->file.IsOpen()) {
    lock_.emplace(std::move(**spare_));
  } else {
    LockFile file(name);
    lock_.emplace(SpareLock{std::move(name), std::move(file)});
  }
  spare_->reset();
  return lock_->file.Take(LockMode::kExclusive, kLockSeconds) ? Code::kNone : Code::kLock;
}

Code FileEdit::Load() {
  file_ = ReadWhole(path_.c_str());
  if (!file_) {
    isNew_ = file_.error == Code::kOpen && errno == ENOENT && newMode_ != kMustExist;
    return isNew_ ? Code::kNone : file_.error;
  }
  return S_ISREG(file_.status.st_mode) ? Code::kNone : Code::kOpen;
}

// Both are right before the first byte of content can be read by anybody, whatever the umask.
bool FileEdit::SetModeAndOwner(int fd) const {
  if (isNew_) return ::fchmod(fd, newMode_) == 0;
  const struct stat& old = file_.status;
  const bool isOurs = old.st_uid == ::geteuid() && old.st_gid == ::getegid();
  return (isOurs || ::fchown(fd, old.st_uid, old.st_gid) == 0) &&
         ::fchmod(fd, old.st_mode & 07777) == 0;
}

Code FileEdit::Replace(std::string_view content) {
  if (!isNew_ && content == file_.text) return Code::kNone;
  const std::string folder = FolderOf(path_);
  const std::string temporary = TemporaryOf(path_);
  ::unlink(temporary.c_str());
  Descriptor fd(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!fd) return CodeOf(Code::kOpen);
  const bool written = SetModeAndOwner(fd.Get()) && WriteAll(fd.Get(), content) &&
                       ::fsync(fd.Get()) == 0 && fd.Close();
  if (written && ::rename(temporary.c_str(), path_.c_str()) == 0) {
    SyncFolder(folder);
    return Code::kNone;
  }
  const int reason = errno;
  ::unlink(temporary.c_str());
  errno = reason;
  return written ? Code::kRename : Code::kWrite;
}

}  // namespace zarncore
