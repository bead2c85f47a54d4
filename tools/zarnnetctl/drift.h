// SPDX-License-Identifier: Apache-2.0
// Where files and kernel disagree.
#pragma once

#include <string>

#include "output.h"

namespace tool {

// Of the state in both views: a row for each field, with "path", "files", "kernel" and the wish
// that settles it, "settled_by".
Json DriftOf(const Json& state);

// What a row has on one side, "wanted", "files" or "kernel", in words.
std::string Side(const Json& row, const char* side);

}  // namespace tool
