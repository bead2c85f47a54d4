// SPDX-License-Identifier: Apache-2.0
// Files of lines, and one line in them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace frame {

// Every line, without newlines. Nothing when the file cannot be read.
std::optional<std::vector<std::string>> LinesOf(const std::string& path);

// The first line that begins with a text, or contains it, without its newline and cut to size - 1
// characters. Empty when there is none and when the file cannot be read.
std::string LineBeginningWith(const std::string& path, const std::string& text, std::size_t size);
std::string LineContaining(const std::string& path, const std::string& text, std::size_t size);

// The same for who tells a file that cannot be read, which is nothing, from one without the line.
std::optional<std::string> FindLineContaining(const std::string& path, const std::string& text,
                                              std::size_t size);

// Adds a line at the end; makes a missing file.
[[nodiscard]] bool AddLine(const std::string& path, const std::string& line);

// Makes an empty file, or gives the present one the present time.
[[nodiscard]] bool Touch(const std::string& path);

// Replaces every occurrence of a text in a file.
[[nodiscard]] bool ReplaceInFile(const std::string& path, const std::string& text,
                                 const std::string& by);

}  // namespace frame
