// SPDX-License-Identifier: Apache-2.0
// Processes of this machine as the kernel tells of them, and those that a change leaves behind.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace change {

struct Process {
  long id = 0;
  std::string name;
  char state = 0;
  long parent = 0;
  long group = 0;
  long long started = 0;  // milliseconds of this run of the machine
};

// Empty where there is none.
std::optional<Process> ReadProcess(const std::string& id);

// This process and its ancestors.
std::vector<std::string> OwnLine();

// Who runs programs for a change: the programs are of its group and began later.
struct Runner {
  long group = 0;       // 0 for one that began outside of this container
  long long since = 0;  // milliseconds of this run of the machine; 0 for nobody
};

// This process, from now on.
Runner ThisRunner();

// Programs that a process which is gone had started and that still run: what they do next would
// undo what is put back. Waits for their ends, a while; those that are left, "rc.network (process
// 812)".
std::vector<std::string> AwaitProgramsOf(const Runner& runner);

}  // namespace change
