// An IPv4 address with its prefix or netmask, as it stands on the command line.
#pragma once

#include <string>

#include "query.h"

namespace tool {

// What was typed, taken apart: how it is put is a matter of usage, what it says the library judges.
struct TypedAddress {
  std::string ip;
  std::string prefix;
  std::string mask;
};

// "ADDRESS/PREFIX" and no netmask, or "ADDRESS" with one. Throws for wrong usage.
TypedAddress TakeApartIpv4(const std::string& address, const std::string& mask);

// Throws for an address or a netmask that is none.
Address ValidateIpv4(const std::string& what, const TypedAddress& typed);

}  // namespace tool
