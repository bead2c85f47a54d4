// SPDX-License-Identifier: Apache-2.0
// Folders: what is in them, and whether they are there.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace frame {

bool IsFolder(const std::string& path);

// The names in a folder that begin with a text, sorted; hidden ones are none. Nothing when the
// folder cannot be read.
std::optional<std::vector<std::string>> EntriesOf(const std::string& folder,
                                                  const std::string& beginning = {});

// The paths whose last part a pattern of the shell's kind matches, sorted; no match is an empty
// list. Nothing when the folder cannot be read.
std::optional<std::vector<std::string>> PathsLike(const std::string& pattern);

// The pattern that matches the last part of this path as it stands, whatever signs are in it.
std::string PatternOf(const std::string& path);

}  // namespace frame
