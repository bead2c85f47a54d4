// SPDX-License-Identifier: Apache-2.0
// Plans: exactly what a change would do.
#pragma once

#include <string>
#include <vector>

#include "output.h"

namespace tool {

// Shows the plan of a wish, or of an undo, which has none, under these options of the library of
// changes, both JSON, and sets the exit status to what the change would end with.
void ShowPlan(Context& context, const char* wish, const std::string& options);

// The same for calls of the library that are no wish, each the function's name and its arguments.
void ShowPlan(Context& context, const std::vector<std::vector<std::string>>& calls);

}  // namespace tool
