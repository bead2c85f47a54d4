// SPDX-License-Identifier: Apache-2.0
// Calls of the library of changes, with documents for texts.
#pragma once

#include <string>
#include <utility>
#include <vector>
#include <zarnnetchange/change.h>

#include "document.h"
#include "output.h"

namespace tool {

struct Answered {
  int result = 0;
  Json report;
};

Answered CompareWish(const Document& wish);
Answered CheckWish(const Document& wish, const Json& options);

// As text for the library.
std::string TextOfWish(const Document& wish);

// The state; throws where it cannot be read.
Json ReadMachine(const Json& options);
Document StateSchema();

// The numbers of the last changes and what came of them, the newest first; none where this user may
// not see them.
std::vector<std::pair<std::string, std::string>> LastChanges();

// The wish in a file; throws WrongUsage for what is none.
Document ReadWish(const std::string& path);

}  // namespace tool
