// SPDX-License-Identifier: Apache-2.0
// A file as it is: its content, mode, owner and extended attributes.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>

namespace change {

struct WholeFile {
  std::string bytes;
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
  std::map<std::string, std::string> attributes;

  bool operator==(const WholeFile&) const = default;
};

// Empty when there is none, or what is there is no regular file. Links are not followed. The
// problem is set when it may be there and could not be read: to take that for none would be to
// remove it.
std::optional<WholeFile> ReadWhole(const std::string& path, std::string* problem = nullptr);

// Replaces the file by this one: beside it, synced, renamed over it. False when that fails; errno
// says why. What a killed writer of the file has left goes first.
bool WriteWhole(const std::string& path, const WholeFile& file);

}  // namespace change
