// SPDX-License-Identifier: Apache-2.0
// The lines of the resolver files: how servers are written into them, and found in them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

#include <zarncore/zarncore.h>

namespace dns_route {

inline constexpr std::string_view kServerWord = "nameserver";
inline constexpr int kListCapacity = 512;
inline constexpr mode_t kFileMode = 0644;

// A line for each server of the list.
std::string ServerLines(const KOPACSZLIST* servers);

// What stands behind the word, up to the next white space. Nothing when the line does not begin
// with the word, or has nothing behind it.
std::optional<std::string_view> ScanServer(std::string_view line);

}  // namespace dns_route
