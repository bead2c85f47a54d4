// SPDX-License-Identifier: Apache-2.0
// Small things that are done with text everywhere.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace platform {

// Copies what fits, with a NUL behind it, and answers its length. The buffer has room for the NUL.
inline std::size_t CopyCut(std::string_view text, char* buffer, std::size_t size) {
  const std::size_t length = text.copy(buffer, size - 1);
  buffer[length] = '\0';
  return length;
}

// Can the text be a part of a line?
inline bool IsOneLine(std::string_view text) {
  return text.find_first_of("\r\n") == std::string_view::npos;
}

// Takes the next line off the text, without its newline.
inline std::string_view TakeLine(std::string_view* text) {
  const std::size_t end = text->find('\n');
  const std::string_view line = text->substr(0, end);
  text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
  return line;
}

}  // namespace platform
