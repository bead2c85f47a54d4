// SPDX-License-Identifier: Apache-2.0
// A file that root alone reads, whole or not there at all.
#pragma once

#include <string>

namespace tool {

// Throws where something other than a regular file stands in its place, or its folder is none:
// before an answer is gathered that could not be written.
void RequirePlaceFor(const std::string& path);

// Puts it in the place of a regular file that is there; mode 0600.
void WriteNewFile(const std::string& path, const std::string& text);

}  // namespace tool
