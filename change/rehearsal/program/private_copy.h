// SPDX-License-Identifier: Apache-2.0
// A private copy of the machine for the process that asks for it.
#pragma once

#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

#include "record/generation.h"

namespace rehearsal {

// A process of the machine that the library may ask for: its name and its arguments.
struct Process {
  std::string name;
  std::vector<std::string> arguments;
};

// What is read of the machine while it can still be seen.
struct Machine {
  std::vector<Process> processes;
  std::vector<std::string> jobs;  // that run, "name" or "name-instance"
  bool jobsAreKnown = false;
  std::set<std::string> ports;  // with a driver of their own
};
Machine ReadMachine(const change::Kernel& kernel);

// The folders that the copy has for itself.
inline constexpr const char* kCopied[] = {"/etc", "/run", "/tmp", "/var"};
// Where what is changed in one of them is kept, and a descriptor's path to what it was.
std::string UpperOf(const std::string& folder);
std::string LowerOf(const std::string& folder);

// Goes on in a process of its own inside the copy; the process that called waits for its end and
// ends with it. False, with a sentence, when the machine allows no copy.
bool EnterCopy(const change::Generation& generation, const Machine& machine, std::string* problem);

}  // namespace rehearsal
