// A copy of a file beside itself that takes its place again when the change is not kept.
#include "frame/os/backup.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

#include "frame/model/paths.h"
#include "frame/os/command.h"

namespace frame {

Backup::Backup(std::string path, const std::string& suffix)
    : path_(std::move(path)), name_(path_ + suffix) {
  if (RunStatus(paths::kCp, "-f", path_, name_) == 0) {
    copy_ = name_;
  } else {
    ::unlink(name_.c_str());  // on a full disk a part of it is there
  }
}

Backup::~Backup() {
  static_cast<void>(Restore());
}  // an exception's way out: nobody is left to tell

bool Backup::Restore() {
  if (!Made()) return true;
  const std::string copy = std::exchange(copy_, {});
  return std::rename(copy.c_str(), path_.c_str()) == 0;
}

bool Backup::Remove() {
  if (!Made()) return true;
  const std::string copy = std::exchange(copy_, {});
  return ::unlink(copy.c_str()) == 0;
}

}  // namespace frame
