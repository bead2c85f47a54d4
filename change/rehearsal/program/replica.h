// SPDX-License-Identifier: Apache-2.0
// The machine's network once more, in this process's own network namespace.
#pragma once

#include "record/kernel.h"

namespace rehearsal {

// Makes every interface with its number, kind, address, MTU, flags, master, addresses and routes.
// The far ends of the cables go into the other network namespace. What cannot be made is noted.
void MakeReplica(const change::Kernel& kernel, int cables);

}  // namespace rehearsal
