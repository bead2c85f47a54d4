// SPDX-License-Identifier: Apache-2.0
// Texts on their way into the fixed fields of the library's records.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

#include "failure.h"

namespace tool {

// Throws for a text that does not fit, rather than cut it.
template <std::size_t N>
void Put(const std::string& what, const std::string& name, const std::string& text,
         char (&field)[N]) {
  if (text.size() >= N)
    throw Failure(what, ZARNNETERR_BAD_PARAMETER,
                  "the " + name + " has more than " + std::to_string(N - 1) + " characters");
  std::memset(field, 0, N);
  text.copy(field, N - 1);
}

}  // namespace tool
