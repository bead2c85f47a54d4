// SPDX-License-Identifier: Apache-2.0
// From one document of the whole state to another: the wish that makes the one of the other.
#pragma once

#include <nlohmann/json.hpp>

namespace tool {

// The merge patch (RFC 7396) that leads from one document to the other: what is gone is null, what
// is the same is not named. Of a list the whole is named.
template <class Document>
Document WishBetween(const Document& before, const Document& after) {
  if (!before.is_object() || !after.is_object()) return after;
  Document wish = Document::object();
  for (const auto& [name, value] : before.items()) {
    if (!after.contains(name)) wish[name] = nullptr;
  }
  for (const auto& [name, value] : after.items()) {
    const auto found = before.find(name);
    if (found == before.end())
      wish[name] = value;
    else if (*found != value)
      wish[name] = WishBetween(*found, value);
  }
  return wish;
}

}  // namespace tool
