// SPDX-License-Identifier: Apache-2.0
// Files in a folder that everybody may write to, /tmp: what lies there under a name of ours may be
// somebody else's link, pipe or file.
#pragma once

#include <string>

#include "frame/os/file.h"

namespace frame {

// Is it a regular file of root's, which nobody else can have laid there or can replace?
bool IsTrustedFile(const std::string& path);

// Opens such a file for reading, and nothing else: no link is followed and no pipe waited for.
File OpenTrustedFile(const std::string& path);

// Makes the name that of such a file, empty where there was none, before a program writes to it:
// what else lies there goes. False when it cannot be had; errno says why.
[[nodiscard]] bool ClaimFile(const std::string& path);

}  // namespace frame
