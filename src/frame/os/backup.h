// A copy of a file beside itself that takes its place again when the change is not kept.
#pragma once

#include <string>

namespace frame {

// Made with /bin/cp -f, so that the copy has the file's mode. Unless Keep() is called the
// destructor renames the copy back over the file; Keep() removes the copy.
class Backup {
 public:
  // The copy's name is that of the file with the suffix appended. A copy that cannot be made is
  // logged by the caller (Made()) and nothing is restored later.
  Backup(std::string path, const std::string& suffix);
  ~Backup();
  Backup(const Backup&) = delete;
  Backup& operator=(const Backup&) = delete;

  [[nodiscard]] bool Made() const { return !copy_.empty(); }
  [[nodiscard]] const std::string& CopyName() const { return name_; }

  // Each answers false when the system refuses; neither does anything without a copy.
  [[nodiscard]] bool Restore();
  [[nodiscard]] bool Remove();

 private:
  std::string path_;
  std::string name_;
  std::string copy_;  // empty once there is nothing left to restore
};

}  // namespace frame
