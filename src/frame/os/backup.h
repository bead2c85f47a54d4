// SPDX-License-Identifier: Apache-2.0
// Copies of a file that a change keeps: beside it, to take its place again, or in memory.
#pragma once

#include <string>
#include <sys/stat.h>

#include "frame/os/file.h"

namespace frame {

// Copies with /bin/cp -f. A copy that is a new file has the mode and owner of the first, whatever
// the umask. False when the copy could not be made; errno says why.
[[nodiscard]] bool CopyFile(const std::string& from, const std::string& to);

// Gives a file the mode and owner of another.
[[nodiscard]] bool MakeAlike(const std::string& path, const std::string& other);

// A copy beside the file, with its mode and owner, made with /bin/cp -f. Unless Remove() has taken
// it away it takes the file's place again: with Restore(), or when the scope ends.
class Backup {
 public:
  // The copy's name is that of the file with the suffix appended, which ends with a number, and
  // more where that name is taken: two changes in one second have a copy each. Copies of changes
  // that were killed go. Of a copy that cannot be made, Made() tells and errno says why; nothing is
  // restored later.
  Backup(std::string path, std::string_view suffix);
  ~Backup();
  Backup(const Backup&) = delete;
  Backup& operator=(const Backup&) = delete;

  [[nodiscard]] bool Made() const { return made_; }
  [[nodiscard]] const std::string& CopyName() const { return name_; }

  // Each answers false when the system refuses; neither does anything without a copy.
  [[nodiscard]] bool Restore();
  [[nodiscard]] bool Remove();

 private:
  std::string path_;
  std::string name_;
  Descriptor lock_;  // of the copy
  bool made_ = false;
};

// A file as it is, in memory: for a change whose copies beside the file have names and a fate of
// their own.
class Snapshot {
 public:
  explicit Snapshot(std::string path);

  // Gives the file its content, mode and owner again, where it has changed; one that was not there
  // goes. A file that could not be read is left alone. False when the system refuses.
  [[nodiscard]] bool PutBack() const;

 private:
  enum class State { kUnknown, kAbsent, kRead };

  std::string path_;
  std::string temporary_;  // made beforehand: the way back should need little memory
  std::string text_;
  struct stat status_ {};
  State state_ = State::kUnknown;
};

}  // namespace frame
