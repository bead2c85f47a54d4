// SPDX-License-Identifier: Apache-2.0
// Replacing a file as a whole: readers see the old content or the new, also after a power cut.
#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

#include "frame/base/error.h"
#include "frame/os/file.h"

namespace frame {

// Makes a new name of a file last through a power cut.
void SyncFolderOf(const std::string& path);

// Files that a change makes beside others for as long as it lives, and holds a lock on: those that
// a pattern of the shell's kind matches and whose maker has been killed.
std::vector<std::string> AbandonedFiles(const std::string& pattern);

// The same of temporary files of this name template, which ends with XXXXXX.
std::vector<std::string> AbandonedTemporaries(std::string nameTemplate);

// One rewrite, step by step: each has a code of its own. The new content is collected in a
// temporary file beside the target, which goes with this object unless it has taken the target's
// place. Where a step answers false errno says why, and the target is as it was.
class Rewrite {
 public:
  // The name has six signs behind the target's, as other files beside it may have: until it takes
  // the target's place it has the sticky bit, by which those that a killed writer has left are
  // known. They go.
  explicit Rewrite(const std::string& path);
  // With the temporary file that is given, whose name others know: a left one goes first, so who
  // uses it holds a lock. Its mode is 0600.
  struct Temporary {
    std::string name;
  };
  Rewrite(std::string path, Temporary temporary);
  // With a temporary file of another name; the template, in the same folder, ends with XXXXXX.
  Rewrite(std::string path, const std::string& nameTemplate);
  ~Rewrite();
  Rewrite(const Rewrite&) = delete;
  Rewrite& operator=(const Rewrite&) = delete;

  [[nodiscard]] bool IsOpen() const { return made_; }
  [[nodiscard]] const std::string& TemporaryName() const { return name_; }
  [[nodiscard]] bool SetMode(mode_t mode);  // before Fill(): nobody else reads a part of it
  [[nodiscard]] bool SetOwner(uid_t user, gid_t group);
  // The mode and owner of the file that stands there, or this mode where there is none.
  [[nodiscard]] bool SetModeOfTarget(mode_t otherwise);
  [[nodiscard]] bool Fill(std::string_view content);  // Write() and Sync()
  [[nodiscard]] bool Write(std::string_view content);
  [[nodiscard]] bool Sync();  // the last step before TakeEffect()
  [[nodiscard]] bool TakeEffect();
  [[nodiscard]] bool SetTargetMode(mode_t mode) const;  // after TakeEffect()

 private:
  std::string path_;
  std::string name_;
  File file_;
  Descriptor lock_;  // of the temporary file, until it has taken the target's place
  mode_t mark_ = 0;
  mode_t mode_ = S_IRUSR | S_IWUSR;
  bool made_ = false;
};

// Fills the file, whose mode has been set or could not be, and puts it in its place. Each step that
// fails leaves a code of its own: 0x0900, 0x0B00, 0x2800.
[[nodiscard]] bool PutInPlace(Rewrite* file, bool hasMode, std::string_view content,
                              const Place& at = {});

}  // namespace frame
