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

void SyncFolderOf(const std::string& path) {
  char folder[PATH_MAX];  // no string: whoever puts a file back may have no memory
  CopyText(std::string_view(path).substr(0, path.rfind('/') + 1), folder);
  const Descriptor fd(::open(*folder == '\0' ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd) ::fsync(fd.Get());  // the new content is in place: a failure here could not be taken back
}

std::vector<std::string> AbandonedTemporaries(std::string nameTemplate) {
  constexpr std::string_view kAny = "??????";
  nameTemplate.replace(nameTemplate.size() - kAny.size(), kAny.size(), kAny);
  std::vector<std::string> abandoned;
  const auto found = PathsLike(nameTemplate);
  if (!found) return abandoned;
  for (const std::string& path : *found) {
    struct stat status {};
    const Descriptor fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (fd && ::fstat(fd.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
        ::flock(fd.Get(), LOCK_EX | LOCK_NB) == 0)
      abandoned.push_back(path);
  }
  return abandoned;
}

Rewrite::Rewrite(const std::string& path) : Rewrite(path, path + ".XXXXXX") {}

Rewrite::Rewrite(std::string path, const std::string& nameTemplate) : path_(std::move(path)) {
  // Between the file and its lock it may be taken for an abandoned one.
  constexpr int kMost = 3;
  struct stat status {};
  for (int i = 0; i < kMost && !made_; ++i) {
    name_ = nameTemplate;
    file_.reset(KOPACFileTempFileOpen(name_.data()));
    if (!file_) return;
    lock_ = Descriptor(::fcntl(::fileno(file_.get()), F_DUPFD_CLOEXEC, 0));
    if (lock_) ::flock(lock_.Get(), LOCK_EX);
    made_ = ::fstat(::fileno(file_.get()), &status) != 0 || status.st_nlink > 0;
  }
}

Rewrite::Rewrite(std::string path, Temporary temporary)
    : path_(std::move(path)), name_(std::move(temporary.name)) {
  ::unlink(name_.c_str());  // mostly there is none
  file_ = StreamOf(
      Descriptor(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR)),
      "w");
  made_ = file_ != nullptr;
}

Rewrite::~Rewrite() {
  const int reason = errno;
  if (made_) ::unlink(name_.c_str());
  errno = reason;
}

bool Rewrite::SetMode(mode_t mode) {
  return ::fchmod(::fileno(file_.get()), mode) == 0;
}

bool Rewrite::SetModeOfTarget(mode_t otherwise) {
  struct stat target {};
  if (::stat(path_.c_str(), &target) != 0) return errno == ENOENT && SetMode(otherwise);
  constexpr mode_t kPermissions = 07777;
  return ::fchown(::fileno(file_.get()), target.st_uid, target.st_gid) == 0 &&
         SetMode(target.st_mode & kPermissions);
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
  lock_ = Descriptor();
  SyncFolderOf(path_);
  return true;
}

bool Rewrite::SetTargetMode(mode_t mode) const {
  return ::chmod(path_.c_str(), mode) == 0;
}

}  // namespace frame
