// SPDX-License-Identifier: Apache-2.0
// Recorders in the place of programs, and of processes.
#pragma once

#include <string>

#include "program/private_copy.h"

namespace rehearsal {

// The recorder's program, beside this one.
std::string RecorderPath();

// Covers every program that the library and its start script run.
void PutRecorders();

// Starts a process with the name and the arguments of one that the machine has.
void StandInFor(const Process& process);

}  // namespace rehearsal
