// SPDX-License-Identifier: Apache-2.0
// What a wish would do, shown before anybody does it.
#pragma once

#include <string>

#include "output.h"

namespace tool {

// Plans the wish with the options of ZARNNetChangeApply() and prints the plan, for people or as the
// library tells it. The exit status is what the change would end with.
void PlanAndPrint(const std::string& wish, const std::string& options, Context* context);

}  // namespace tool
