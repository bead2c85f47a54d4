// SPDX-License-Identifier: Apache-2.0
// Copies of a file that a change keeps: beside it, to take its place again, or in memory.
#include "frame/os/backup.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/file_tools.h"
#include "frame/os/folder.h"
#include "frame/os/rewrite.h"

namespace frame {
namespace {

// Why a copy that was begun has failed: the program says it on its standard error only.
int ReasonOf(const std::string& from, const std::string& to) {
  struct statvfs disk {};
  if (!Exists(from)) return ENOENT;
  return ::statvfs(to.c_str(), &disk) == 0 && disk.f_bavail == 0 ? ENOSPC : EIO;
}

// Runs the copy. False with errno, also where the program could not be started.
bool RunCopy(const std::string& from, const std::string& to) {
  const int status = RunStatus(paths::kCp, "-f", from, to);
  if (status > 0) errno = ReasonOf(from, to);
  return status == 0;
}

// Makes an empty file of this name, or of the next that is free. Closed with errno.
Descriptor TakeName(std::string* name) {
  constexpr int kMost = 100;
  const std::string first = *name;
  for (int i = 1; i <= kMost; ++i) {
    Descriptor fd(::open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (fd || errno != EEXIST) return fd;
    *name = first + "." + std::to_string(i);
  }
  return Descriptor();
}

void RemoveAbandonedCopies(const std::string& path, std::string_view suffix) {
  const std::string_view word = suffix.substr(0, suffix.find_last_not_of("0123456789") + 1);
  for (const std::string& left : AbandonedFiles(PatternOf(path).append(word) + "[0-9]*"))
    ::unlink(left.c_str());
}

// A program that fails without saying so must not make an empty file of the one that is copied.
bool IsWholeCopy(const std::string& copy, const std::string& path) {
  struct stat a {};
  struct stat b {};
  const bool whole =
      ::stat(copy.c_str(), &a) == 0 && ::stat(path.c_str(), &b) == 0 && a.st_size == b.st_size;
  if (!whole) errno = EIO;
  return whole;
}

void Sync(const std::string& path) {
  const Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (fd) ::fsync(fd.Get());  // a disk that fails here is no reason to keep the newer content
}

std::optional<std::string> WholeText(std::FILE* file) {
  std::string text;
  std::array<char, 4096> part{};
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), file))
    text.append(part.data(), size);
  if (std::ferror(file) != 0) return std::nullopt;
  return text;
}

}  // namespace

bool MakeAlike(const std::string& path, const std::string& other) {
  struct stat wanted {};
  struct stat now {};
  if (::stat(other.c_str(), &wanted) != 0 || ::stat(path.c_str(), &now) != 0) return false;
  const bool owned = wanted.st_uid == now.st_uid && wanted.st_gid == now.st_gid;
  return (owned || ::chown(path.c_str(), wanted.st_uid, wanted.st_gid) == 0) &&
         ::chmod(path.c_str(), wanted.st_mode & 07777) == 0;
}

bool CopyFile(const std::string& from, const std::string& to) {
  const bool isNew = !Exists(to);
  return RunCopy(from, to) && (!isNew || MakeAlike(to, from));
}

Backup::Backup(std::string path, std::string_view suffix)
    : path_(std::move(path)), name_(path_ + std::string(suffix)) {
  RemoveAbandonedCopies(path_, suffix);
  lock_ = TakeName(&name_);
  if (!lock_) return;
  ::flock(lock_.Get(), LOCK_EX);
  made_ = RunCopy(path_, name_) && IsWholeCopy(name_, path_) && MakeAlike(name_, path_);
  if (made_) return;
  const int reason = errno;
  ::unlink(name_.c_str());  // on a full disk a part of it is there
  errno = reason;
}

Backup::~Backup() {
  static_cast<void>(Restore());  // an exception's way out: nobody is left to tell
}

bool Backup::Restore() {
  if (!std::exchange(made_, false)) return true;
  Sync(name_);
  if (std::rename(name_.c_str(), path_.c_str()) != 0) return false;
  SyncFolderOf(path_);
  return true;
}

bool Backup::Remove() {
  return !std::exchange(made_, false) || ::unlink(name_.c_str()) == 0;
}

Snapshot::Snapshot(std::string path) : path_(std::move(path)) {
  const std::size_t name = path_.rfind('/') + 1;
  temporary_ = path_.substr(0, name) + "." + path_.substr(name) + ".XXXXXX";
  const File file = OpenFile(path_, "r");
  if (!file) {
    state_ = errno == ENOENT ? State::kAbsent : State::kUnknown;
    return;
  }
  auto text = ::fstat(::fileno(file.get()), &status_) == 0 ? WholeText(file.get()) : std::nullopt;
  if (!text) return;
  text_ = std::move(*text);
  state_ = State::kRead;
}

bool Snapshot::PutBack() const {
  if (state_ == State::kUnknown) return true;
  if (state_ == State::kAbsent) return ::unlink(path_.c_str()) == 0 || errno == ENOENT;
  const Snapshot now(path_);
  const mode_t mode = status_.st_mode & 07777;
  if (now.state_ == State::kRead && now.text_ == text_ && (now.status_.st_mode & 07777) == mode &&
      now.status_.st_uid == status_.st_uid && now.status_.st_gid == status_.st_gid)
    return true;
  Rewrite file(path_, temporary_);
  return file.IsOpen() && file.SetOwner(status_.st_uid, status_.st_gid) && file.SetMode(mode) &&
         file.Fill(text_) && file.TakeEffect();
}

}  // namespace frame
