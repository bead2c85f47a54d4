// SPDX-License-Identifier: Apache-2.0
// Documents of the state as people write them: JSON, or YAML with JSON's types alone.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace tool {

// Sorted, so that a text of a million names is read in a moment.
using Document = nlohmann::json;

constexpr std::size_t kLongestDocument = 1U << 20;

// What a text cannot be read for, and where.
struct Mistake {
  std::size_t line = 0;  // from 1; 0 for the text as a whole
  std::string sentence;
};

// A text that begins with "{" or "[" is JSON, any other YAML 1.2 of the core schema: "no" and
// "08:00" are texts. A name that stands twice is refused.
std::optional<Document> ReadDocument(const std::string& text, Mistake* mistake);

// The line of a YAML text in which the field of this JSON pointer begins, or else what it belongs
// to; 0 for none.
std::size_t LineOf(const std::string& text, const std::string& pointer);

// As YAML, each field with what the JSON Schema says of it; names in the schema's order.
std::string WrittenAsYaml(const Document& document, const Document& schema);

// The text of a file, "-" is standard input; throws for one that cannot be read or is too long.
std::string ReadText(const std::string& path);

}  // namespace tool
