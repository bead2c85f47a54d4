// Replacing a file as a whole: readers see the old content or the new, also after a power cut.
#include "frame/os/rewrite.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <zarncore/zarncore.h>

namespace frame {

void SyncFolderOf(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  const Descriptor fd(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd) ::fsync(fd.Get());  // the new content is in place: a failure here could not be taken back
}

Rewrite::Rewrite(std::string path) : Rewrite(path, path + ".XXXXXX") {}

Rewrite::Rewrite(std::string path, std::string nameTemplate)
    : path_(std::move(path)),
      name_(std::move(nameTemplate)),
      file_(KOPACFileTempFileOpen(name_.data())),
      made_(file_ != nullptr) {}

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
  SyncFolderOf(path_);
  return true;
}

bool Rewrite::SetTargetMode(mode_t mode) const {
  return ::chmod(path_.c_str(), mode) == 0;
}

}  // namespace frame
