// SPDX-License-Identifier: Apache-2.0
// The string-to-string map behind KOPACSZHASH. Keys are listed in the order in which they were
// first set, so that an edit appends new keys in the order its caller named them.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <zarncore/zarncore.h>

struct KOPACSZHASH {
  std::vector<std::pair<std::string, std::string>> entries;
  std::unordered_map<std::string, std::size_t> index;
};

namespace zarncore {

void Put(KOPACSZHASH* hash, const char* key, const char* value);

// The entries of a hash in order; a null hash has none.
const std::vector<std::pair<std::string, std::string>>& Entries(const KOPACSZHASH* hash);

}  // namespace zarncore
