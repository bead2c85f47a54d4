// SPDX-License-Identifier: Apache-2.0
// An IPv4 address and its prefix or netmask, as typed on the command line.
#pragma once

#include <string>

#include "query.h"

namespace tool {

// What was typed, taken apart: how it is put is a matter of usage, what it says the library judges.
struct Typed {
  std::string ip;
  std::string prefix;
  std::string mask;
};

// ADDRESS/PREFIX alone, or ADDRESS and NETMASK; anything else is wrong usage.
Typed TakeApart(const std::string& address, const std::string& mask);

// Throws unless the library and the programs behind it take it for a host's.
Address Validate(const std::string& what, const Typed& typed);

}  // namespace tool
