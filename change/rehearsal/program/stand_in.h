// SPDX-License-Identifier: Apache-2.0
// Processes that stand in for those of the machine: readers find them by name and arguments.
#pragma once

#include <spawn.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "program/journal.h"

namespace rehearsal {

// Starts one, which stays until it is ended.
inline void StandIn(const std::string& name, const Fields& arguments) {
  const std::string link = kStandIns + name;
  static_cast<void>(::symlink(kRecorder, link.c_str()) == 0);  // it may be there already
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments)
    argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t child = -1;
  ::posix_spawn(&child, link.c_str(), nullptr, nullptr, argv.data(), environ);
}

}  // namespace rehearsal
