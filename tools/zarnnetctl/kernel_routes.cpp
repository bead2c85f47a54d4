// SPDX-License-Identifier: Apache-2.0
#include "kernel_routes.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "query.h"

namespace tool {
namespace {

using Fields = std::vector<std::string>;

// Is there a line in the kernel's table of which this holds?
template <class Holds>
bool AnyLine(const char* table, std::size_t fields, Holds holds) {
  std::ifstream file(table);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    Fields found;
    for (std::string word; words >> word;)
      found.push_back(word);
    if (found.size() >= fields && holds(found)) return true;
  }
  return false;
}

// As the tables have them: of IPv4 a number in the machine's order, of IPv6 one byte after the
// other.
std::string Hex(in_addr_t address) {
  std::array<char, 9> text{};
  std::snprintf(text.data(), text.size(), "%08X", address);
  return text.data();
}
std::string Hex(const in6_addr& address) {
  std::string text;
  for (const unsigned char byte : address.s6_addr) {
    std::array<char, 3> two{};
    std::snprintf(two.data(), two.size(), "%02x", byte);
    text += two.data();
  }
  return text;
}

}  // namespace

bool HasSubnetRoute(const std::string& ifname) {
  enum : std::size_t { kIfname = 0, kTarget = 1, kGateway = 2, kMask = 7, kFields = 8 };
  const auto configured = ReadConfiguration(ifname);
  in_addr address{};
  in_addr mask{};
  if (!configured || ::inet_pton(AF_INET, configured->address.ip.c_str(), &address) != 1 ||
      ::inet_pton(AF_INET, configured->address.mask.c_str(), &mask) != 1)
    return false;
  const std::string target = Hex(address.s_addr & mask.s_addr);
  return AnyLine("/proc/net/route", kFields, [&](const Fields& line) {
    return line[kIfname] == ifname && line[kTarget] == target && line[kGateway] == Hex(0) &&
           line[kMask] == Hex(mask.s_addr);
  });
}

bool HasIpv6Default(const std::string& ifname, const std::string& gateway) {
  enum : std::size_t { kLength = 1, kGateway = 4, kIfname = 9, kFields = 10 };
  in6_addr wanted{};
  if (::inet_pton(AF_INET6, gateway.c_str(), &wanted) != 1) return false;
  return AnyLine("/proc/net/ipv6_route", kFields, [&](const Fields& line) {
    return line[kLength] == "00" && line[kGateway] == Hex(wanted) && line[kIfname] == ifname;
  });
}

}  // namespace tool
