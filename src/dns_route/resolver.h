// SPDX-License-Identifier: Apache-2.0
// The resolver's file, and the mode that decides which name servers are in it.
#pragma once

#include <zarncore/zarncore.h>

namespace dns_route {

// The key of the settings file, and its values: the servers are fixed, or learned on the
// interfaces. Any other value counts as the latter.
inline constexpr char kModeKey[] = "dns_mode";
inline constexpr char kStaticMode[] = "static";
inline constexpr char kAutoMode[] = "auto";

// Replaces the file by these servers and lines, and tells the appliance before and after. False
// with the code of the step that failed; nothing is told of a list that nothing can be made of.
bool WriteResolver(const KOPACSZLIST* servers, const KOPACSZLIST* extra);

// Rebuilds it from the servers of the mode that is set.
bool UpdateResolver();

// Stores the mode and rebuilds the file.
bool SetMode(const char* mode);

// Fixes the servers.
bool SetServers(const KOPACSZLIST* servers);

}  // namespace dns_route
