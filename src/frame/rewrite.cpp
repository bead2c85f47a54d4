// Replacing a file as a whole: readers see the old content or the new, also after a power cut.
#include "frame/rewrite.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "frame/file.h"

namespace frame {
namespace {

// The temporary file, removed with its owner unless it has taken the target's place.
class Temporary {
 public:
  explicit Temporary(const std::string& path)
      : name_(path + ".XXXXXX"), file_(KOPACFileTempFileOpen(name_.data())) {
    made_ = file_ != nullptr;
  }
  ~Temporary() {
    const int reason = errno;
    if (made_) ::unlink(name_.c_str());
    errno = reason;
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_ != nullptr; }
  [[nodiscard]] bool Fill(std::string_view content, mode_t mode) {
    return ::fchmod(::fileno(file_.get()), mode) == 0 &&
           std::fwrite(content.data(), 1, content.size(), file_.get()) == content.size() &&
           std::fflush(file_.get()) == 0 && ::fsync(::fileno(file_.get())) == 0;
  }
  [[nodiscard]] bool Close() { return std::fclose(file_.release()) == 0; }
  [[nodiscard]] bool TakePlaceOf(const std::string& path) {
    if (std::rename(name_.c_str(), path.c_str()) != 0) return false;
    made_ = false;
    return true;
  }

 private:
  std::string name_;
  File file_;
  bool made_ = false;
};

void SyncFolderOf(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  const Descriptor fd(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd) ::fsync(fd.Get());  // the new content is in place: a failure here could not be taken back
}

}  // namespace

RewriteStep RewriteFile(const std::string& path, std::string_view content, mode_t mode) {
  Temporary temporary(path);
  if (!temporary.IsOpen()) return RewriteStep::kOpen;
  const bool filled = temporary.Fill(content, mode);
  if (!temporary.Close() || !filled) return RewriteStep::kWrite;
  if (!temporary.TakePlaceOf(path)) return RewriteStep::kRename;
  SyncFolderOf(path);
  return RewriteStep::kDone;
}

}  // namespace frame
