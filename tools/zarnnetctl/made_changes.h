// SPDX-License-Identifier: Apache-2.0
// Changes that were made, as the history has them, in words.
#pragma once

#include <string>

#include "output.h"

namespace tool {

std::string Who(const Json& change);
std::string What(const Json& change);

// Number, state, beginning, who and what; a record that cannot be read says why.
Row RowOf(const Json& change);

}  // namespace tool
