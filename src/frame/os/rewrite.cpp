// SPDX-License-Identifier: Apache-2.0
// Replacing a file as a whole: readers see the old content or the new, also after a power cut.
#include "frame/os/rewrite.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <zarncore/zarncore.h>

#include "frame/base/text.h"
#include "frame/os/folder.h"

namespace frame {
namespace {

constexpr mode_t kMark = S_ISVTX;
constexpr std::size_t kSigns = 6;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;

// A word behind a dot is another file's name: resolv.conf.static is no temporary of resolv.conf.
bool IsNoWord(const std::string& path) {
  return path.find_first_not_of("abcdefghijklmnopqrstuvwxyz", path.size() - kSigns) !=
         std::string::npos;
}

// A writer that was killed before it could mark its file has not written to it either.
bool IsMarked(const std::string& path) {
  struct stat status {};
  return IsNoWord(path) && ::lstat(path.c_str(), &status) == 0 &&
         ((status.st_mode & kMark) != 0 ||
          (status.st_size == 0 && (status.st_mode & 07777) == kPrivate));
}

}  // namespace

void SyncFolderOf(const std::string& path) {
  char folder[PATH_MAX];  // no string: whoever puts a file back may have no memory
  CopyText(std::string_view(path).substr(0, path.rfind('/') + 1), folder);
  const Descriptor fd(::open(*folder == '\0' ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd) ::fsync(fd.Get());  // the new content is in place: a failure here could not be taken back
}

std::vector<std::string> AbandonedFiles(const std::string& pattern) {
  std::vector<std::string> abandoned;
  const auto found = PathsLike(pattern);
  if (!found) return abandoned;
  for (const std::string& path : *found) {
    struct stat status {};
    const Descriptor fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (fd && ::fstat(fd.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_uid == ::geteuid() && ::flock(fd.Get(), LOCK_EX | LOCK_NB) == 0)
      abandoned.push_back(path);
  }
  return abandoned;
}

std::vector<std::string> AbandonedTemporaries(std::string nameTemplate) {
  nameTemplate.replace(nameTemplate.size() - kSigns, kSigns, kSigns, '?');
  return AbandonedFiles(nameTemplate);
}

Rewrite::Rewrite(const std::string& path) : Rewrite(path, path + ".XXXXXX") {
  const int reason = errno;
  for (const std::string& left : AbandonedTemporaries(PatternOf(path) + ".XXXXXX")) {
    if (IsMarked(left)) ::unlink(left.c_str());
  }
  mark_ = kMark;
  if (made_) ::fchmod(::fileno(file_.get()), mode_ | mark_);
  errno = reason;
}

Rewrite::Rewrite(std::string path, const std::string& nameTemplate) : path_(std::move(path)) {
  // Between the file and its lock it may be taken for an abandoned one.
  constexpr int kMost = 5;
  struct stat status {};
  for (int i = 0; i < kMost && !made_; ++i) {
    name_ = nameTemplate;
    file_.reset(KOPACFileTempFileOpen(name_.data()));
    if (!file_) return;
    if (!IsNoWord(name_)) {
      ::unlink(name_.c_str());
      continue;
    }
    lock_ = Descriptor(::fcntl(::fileno(file_.get()), F_DUPFD_CLOEXEC, 0));
    if (lock_) ::flock(lock_.Get(), LOCK_EX);
    made_ = ::fstat(::fileno(file_.get()), &status) != 0 || status.st_nlink > 0;
  }
}

Rewrite::Rewrite(std::string path, Temporary temporary)
    : path_(std::move(path)), name_(std::move(temporary.name)) {
  ::unlink(name_.c_str());  // mostly there is none
  Descriptor fd(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivate));
  const bool isThere = static_cast<bool>(fd);
  file_ = StreamOf(std::move(fd), "w");
  made_ = file_ != nullptr;
  if (isThere && !made_) ::unlink(name_.c_str());  // no memory for its stream
}

Rewrite::~Rewrite() {
  const int reason = errno;
  if (made_) ::unlink(name_.c_str());
  errno = reason;
}

bool Rewrite::SetMode(mode_t mode) {
  mode_ = mode;
  return ::fchmod(::fileno(file_.get()), mode | mark_) == 0;
}

bool Rewrite::SetModeOfTarget(mode_t otherwise) {
  struct stat target {};
  if (::stat(path_.c_str(), &target) != 0) return errno == ENOENT && SetMode(otherwise);
  constexpr mode_t kPermissions = 07777;
  return ::fchown(::fileno(file_.get()), target.st_uid, target.st_gid) == 0 &&
         SetMode(target.st_mode & kPermissions & ~mark_);
}

bool Rewrite::SetOwner(uid_t user, gid_t group) {
  return ::fchown(::fileno(file_.get()), user, group) == 0;
}

bool Rewrite::Fill(std::string_view content) {
  return Write(content) && Sync();
}

bool Rewrite::Write(std::string_view content) {
  return std::fwrite(content.data(), 1, content.size(), file_.get()) == content.size();
}

bool Rewrite::Sync() {
  const bool filled = std::fflush(file_.get()) == 0 && ::fsync(::fileno(file_.get())) == 0;
  const int reason = errno;
  if (std::fclose(file_.release()) != 0) return false;
  errno = reason;
  return filled;
}

bool Rewrite::TakeEffect() {
  if (std::rename(name_.c_str(), path_.c_str()) != 0) return false;
  made_ = false;
  if (mark_ != 0) ::chmod(path_.c_str(), mode_);
  lock_ = Descriptor();
  SyncFolderOf(path_);
  return true;
}

bool Rewrite::SetTargetMode(mode_t mode) const {
  return ::chmod(path_.c_str(), mode) == 0;
}

bool PutInPlace(Rewrite* file, bool hasMode, std::string_view content, const Place& at) {
  if (!file->IsOpen()) return Fail(ZARNNETERR_OPEN, false, at);
  if (!hasMode || !file->Fill(content)) return Fail(ZARNNETERR_WRITE, false, at);
  return file->TakeEffect() || Fail(ZARNNETERR_RENAME, false, at);
}

}  // namespace frame
