// SPDX-License-Identifier: Apache-2.0
// JSON inside the library, and paths into it: interface names have dots in them, so a path is a
// JSON pointer.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace change {

using Json = nlohmann::json;
using Path = Json::json_pointer;

// The value at the path; null where there is none, so that "removed" and "never there" are one.
inline const Json& At(const Json& document, const Path& path) {
  static const Json none;
  return document.contains(path) ? document.at(path) : none;
}

inline const Json& Member(const Json& object, const std::string& name) {
  static const Json none;
  const auto found = object.is_object() ? object.find(name) : object.end();
  return found == object.end() ? none : *found;
}

inline std::string TextOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : std::string();
}
inline long NumberOf(const Json& value, long without = 0) {
  return value.is_number_integer() ? value.get<long>() : without;
}
inline bool IsTrue(const Json& value) {
  return value.is_boolean() && value.get<bool>();
}

inline std::vector<std::string> TextsOf(const Json& list) {
  std::vector<std::string> texts;
  if (!list.is_array()) return texts;
  for (const Json& text : list)
    texts.push_back(TextOf(text));
  return texts;
}

// Sets the field unless the value is empty: in a document of state, what there is none of is not
// named (null would be a wish to remove it).
inline void Put(Json* object, const char* name, const Json& value) {
  if (value.is_null() || (value.is_string() && TextOf(value).empty())) return;
  (*object)[name] = value;
}

inline Path operator/(const char* section, const std::string& name) {
  return Path() / std::string(section) / name;
}

// Whether one path is the other, or leads to or from it.
inline bool Leads(const Path& outer, Path inner) {
  const auto depth = [](const Path& path) {
    const std::string text = path.to_string();
    return std::count(text.begin(), text.end(), '/');
  };
  while (depth(inner) > depth(outer))
    inner.pop_back();
  return inner == outer;
}
inline bool Meet(const Path& a, const Path& b) {
  return Leads(a, b) || Leads(b, a);
}

}  // namespace change

// Made once, in json.cpp: each source would spend most of its compilation on it.
extern template class nlohmann::basic_json<>;
