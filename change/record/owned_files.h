// SPDX-License-Identifier: Apache-2.0
// The files that changes write, and keep beforehand.
#pragma once

#include <string>
#include <vector>

namespace change {

// The tunnel's service: whether it is meant to run.
inline constexpr char kTunnelService[] = "/etc/zarnservice/zarntunnel.conf";

// Those that may be there now, sorted. The problem is set when some may be missing.
std::vector<std::string> OwnedFiles(std::string* problem = nullptr);

// Removes what writers that were killed left beside the library's files: content that did not take
// its place. One that somebody writes is locked, and stays.
void RemoveAbandonedFiles();

}  // namespace change
