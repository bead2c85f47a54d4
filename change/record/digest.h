// SPDX-License-Identifier: Apache-2.0
// What tells one content from another.
#pragma once

#include <string>

#include "record/whole_file.h"

namespace change {

// SHA-256, as digits.
std::string DigestOf(const std::string& bytes);
// Of a file with its mode, owner and attributes.
std::string DigestOf(const WholeFile& file);

}  // namespace change
