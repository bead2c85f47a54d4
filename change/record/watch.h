// SPDX-License-Identifier: Apache-2.0
// The process that holds a change's deadline when who made it is gone.
#pragma once

#include <string>

namespace change {

// Starts one for the change, in a session of its own. False with the reason.
bool StartWatcher(long number, std::string* problem);

bool IsWatched(long number);

}  // namespace change
