// SPDX-License-Identifier: Apache-2.0
// Calls of libzarnnetsdk that no document can wish, such as to flush addresses: they can be
// planned like a change.
#pragma once

#include <string>

#include "steps/engine.h"

namespace change {

// The calls, each a list of the function's name and its arguments, as steps. None, with a sentence,
// when one of them is no such call.
Steps StepsOfCalls(const Json& calls, std::string* problem);

// Makes them in the copy.
Report RehearseCalls(const Json& calls, const EnterCopy& enter);

}  // namespace change
