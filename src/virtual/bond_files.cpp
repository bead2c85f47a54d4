// SPDX-License-Identifier: Apache-2.0
// What a change of a bond keeps of its slaves' files, and how it puts them back.
#include "virtual/bond_files.h"

#include <unistd.h>

#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

void virtual_if::DropSavedFiles(const Names& slaves) {
  for (const std::string& slave : slaves)
    ::unlink(model::SavedPath(paths::Ifcfg(slave)).c_str());
}

virtual_if::SavedFiles::SavedFiles(const Names& slaves) {
  for (const std::string& slave : slaves) {
    paths_.push_back(paths::Ifcfg(slave));
    saved_.push_back(model::SavedPath(paths_.back()));
  }
}

// Run for every slave: one whose file was not touched yet has no copy, and nothing happens to it.
void virtual_if::SavedFiles::MoveBack() const {
  for (std::size_t i = 0; i < paths_.size(); ++i)
    static_cast<void>(RunStatus(paths::kMv, "-f", saved_[i], paths_[i]));
}
