// The options of an IPv4 subnet beyond router, name servers and domain, by name and number.
#pragma once

#include <span>
#include <string>

namespace tool {

struct DhcpOption {
  int number;
  const char* name;
};

std::span<const DhcpOption> DhcpOptions();

// The number of a name; 0 for any other text.
int DhcpOptionNumber(const std::string& name);

}  // namespace tool
