// SPDX-License-Identifier: Apache-2.0
// A password on its way into a wish, from a file or from standard input, where no other process
// sees it.
#pragma once

#include <string>

namespace tool {

// The first line of the file; "-" is standard input, without echo where that is a terminal.
std::string ReadSecret(const std::string& what, const std::string& path);

}  // namespace tool
