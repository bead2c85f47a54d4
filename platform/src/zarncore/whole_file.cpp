// Reading a file whole, and replacing one: the only way in which this library rewrites files.
#include "whole_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

#include "descriptor.h"
#include "lock_file.h"

namespace zarncore {
namespace {

constexpr int kLockSeconds = 30;

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// The file behind a path: links are followed, so that they survive the rename and all who edit the
// file wait on one lock. A file that is not there yet has its folder followed.
std::string Resolved(const std::string& path) {
  const auto real = [](const std::string& text) {
    return std::unique_ptr<char, decltype(&std::free)>(::realpath(text.c_str(), nullptr),
                                                       &std::free);
  };
  if (const auto file = real(path)) return file.get();
  const auto folder = real(FolderOf(path));
  return folder ? std::string(folder.get()) + "/" + NameOf(path) : path;
}

// Hidden beside the file: who looks through the folder for files of a kind finds none half written.
std::string TemporaryOf(const std::string& path) {
  return FolderOf(path) + "/." + NameOf(path) + ".XXXXXX";
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

// Reads to the end; the size is a hint only, the kernel's own files have none.
bool ReadAll(int fd, std::size_t sizeHint, std::string* content) {
  content->resize(sizeHint + 1);
  std::size_t used = 0;
  for (;;) {
    if (used == content->size()) content->resize(content->size() * 2 + 4096);
    const ssize_t length = ::read(fd, content->data() + used, content->size() - used);
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) return false;
    if (length == 0) break;
    used += static_cast<std::size_t>(length);
  }
  content->resize(used);
  return true;
}

// The lock file of this thread's last edit stays open for the next: opening costs more than
// locking.
struct Spare {
  std::string name;
  LockFile lock;
};
thread_local std::optional<Spare> spare;

LockFile SpareOrNew(const std::string& name) {
  if (!spare || spare->name != name || !spare->lock.IsOpen()) return LockFile(name);
  LockFile lock(std::move(spare->lock));
  spare.reset();
  return lock;
}

}  // namespace

bool SyncFolder(const std::string& folder) {
  const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return fd && ::fsync(fd.Get()) == 0;
}

std::optional<std::string> ReadWhole(const char* path) {
  const Descriptor fd(::open(path, O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!fd || ::fstat(fd.Get(), &status) != 0) return std::nullopt;
  std::string content;
  if (!ReadAll(fd.Get(), static_cast<std::size_t>(status.st_size), &content)) return std::nullopt;
  return content;
}

FileEdit::FileEdit(const char* path)
    : path_(Resolved(path)), lockName_(EditLockName(path_)), lock_(SpareOrNew(lockName_)) {
  ready_ = lock_.Take(LockMode::kExclusive, kLockSeconds) && Load();
}

FileEdit::~FileEdit() {
  if (!lock_.IsOpen()) return;
  lock_.Release();
  spare.emplace(Spare{std::move(lockName_), std::move(lock_)});
}

bool FileEdit::Load() {
  const Descriptor fd(::open(path_.c_str(), O_RDONLY | O_CLOEXEC));
  if (!fd) {
    isNew_ = errno == ENOENT;
    return isNew_;
  }
  return ::fstat(fd.Get(), &status_) == 0 && S_ISREG(status_.st_mode) &&
         ReadAll(fd.Get(), static_cast<std::size_t>(status_.st_size), &content_);
}

// Mode and owner are right before the first byte of content can be read by anybody.
bool FileEdit::WriteTemporary(int fd, std::string_view content) const {
  if (isNew_) {
    if (::fchmod(fd, 0644) != 0) return false;
  } else if ((status_.st_uid != ::geteuid() || status_.st_gid != ::getegid()) &&
             ::fchown(fd, status_.st_uid, status_.st_gid) != 0) {
    return false;
  } else if (::fchmod(fd, status_.st_mode & 07777) != 0) {
    return false;
  }
  return WriteAll(fd, content) && ::fsync(fd) == 0;
}

bool FileEdit::Replace(std::string_view content) {
  if (!isNew_ && content == content_) return true;
  std::string temporary = TemporaryOf(path_);
  Descriptor fd(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!fd) return false;
  if (WriteTemporary(fd.Get(), content) && fd.Close() &&
      ::rename(temporary.c_str(), path_.c_str()) == 0) {
    return SyncFolder(FolderOf(path_));
  }
  const int error = errno;
  ::unlink(temporary.c_str());
  errno = error;
  return false;
}

}  // namespace zarncore
