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

}  // namespace rehearsal
