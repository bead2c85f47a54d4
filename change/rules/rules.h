// SPDX-License-Identifier: Apache-2.0
// What is refused, or done only when insisted on, before anything is touched. A rule is one
// function and its line in the table; its sentence names the way out.
#pragma once

#include "steps/change_state.h"

namespace change {

// All rules, each asked once.
void JudgeByRules(const Change& change, Findings* findings);

// What of the path over which this process is asked would go if the kernel became so; a sentence,
// empty for nothing.
std::string OwnPathLostBy(const Kernel& now, const Kernel& later);

}  // namespace change
