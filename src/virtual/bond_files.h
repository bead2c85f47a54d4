// SPDX-License-Identifier: Apache-2.0
// The interface files of a bond and of its slaves.
#pragma once

#include <string>
#include <vector>

#include <zarncore/zarncore.h>

namespace virtual_if {

using Names = std::vector<std::string>;

// Adds to the keys to set what makes the boot protocol of a file that of an interface on its own.
// 0; negative, with a code set, where the file is there and cannot be read, or memory runs out.
int FixBootProto(const std::string& path, PKOPACSZHASH* keysToSet);

// Makes an interface's file that of a bond's slave, or that of an interface of its own again. The
// file as it was stays beside it.
[[nodiscard]] bool JoinBond(const std::string& slave, const std::string& bond);
[[nodiscard]] bool LeaveBond(const std::string& slave);

// Removes a bond's file, and releases every interface whose file names it. Its settings go to the
// heir; without a name, to the first of these interfaces. On failure the files are as they were.
[[nodiscard]] bool RemoveBond(const std::string& bond, std::string heir);

// Removes what an earlier change has left beside the slaves' files: a way back can then bring back
// only what this one has kept. What cannot be removed cannot be moved either.
void DropSavedFiles(const Names& slaves);

// Moves what a change has kept of the slaves' files over them again.
class SavedFiles {
 public:
  explicit SavedFiles(const Names& slaves);
  void MoveBack() const;

 private:
  Names paths_;  // with those of the copies: the way back should need no memory
  Names saved_;
};

}  // namespace virtual_if
