// SPDX-License-Identifier: Apache-2.0
// A folder with all that is in it, into memory.
#pragma once

#include <string>

namespace rehearsal {

// Copies what may be read, of one file system, up to a bound, as root's. False when that left
// something out.
bool CopyFolder(const std::string& from, const std::string& to);

}  // namespace rehearsal
