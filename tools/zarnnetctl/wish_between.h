// SPDX-License-Identifier: Apache-2.0
// From one document of the whole state to another: the wish that makes the one of the other.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace tool {

// The merge patch (RFC 7396) that leads from one document to the other: what is gone is null, what
// is the same is not named. Of a list the whole is named.
template <class Document>
Document PatchBetween(const Document& before, const Document& after) {
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
      wish[name] = PatchBetween(*found, value);
  }
  return wish;
}

// Who loses a VLAN or leaves a bond gets their addresses where nothing else is named.
template <class Document>
void NameAddresses(const Document& after, const std::string& ifname, Document* wish) {
  for (const char* family : {"/ipv4", "/ipv6"}) {
    const typename Document::json_pointer path("/interfaces/" + ifname + family);
    if (after.contains(path) && !wish->contains(path)) (*wish)[path] = after[path];
  }
}

// The patch, and what is to stay as it is where something leaves its own addresses behind.
template <class Document>
Document WishBetween(const Document& before, const Document& after) {
  Document wish = PatchBetween(before, after);
  if (!before.is_object() || !after.is_object()) return wish;
  const std::pair<const char*, const char*> kinds[] = {{"bonds", "slaves"}, {"vlans", "parent"}};
  for (const auto& [section, field] : kinds) {
    const Document things = before.value(section, Document::object());
    const Document left = after.value(section, Document::object());
    for (const auto& [name, thing] : things.items()) {
      const auto same = left.find(name);
      if (same != left.end() && *same == thing) continue;
      const Document parts = thing.value(field, Document::array());
      for (const Document& part : parts.is_array() ? parts : Document::array({parts}))
        NameAddresses(after, part.template get<std::string>(), &wish);
    }
  }
  return wish;
}

}  // namespace tool
