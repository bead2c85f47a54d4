// SPDX-License-Identifier: Apache-2.0
// An IPv4 address and its prefix or netmask, as typed on the command line.
#include "typed_address.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "verbs.h"

namespace tool {

Json PrefixedAddress(const std::string& text) {
  const std::size_t slash = text.find('/');
  int prefix = 0;
  const char* const end = text.data() + text.size();
  const char* const digits = slash == std::string::npos ? end : text.data() + slash + 1;
  const auto [rest, error] = std::from_chars(digits, end, prefix);
  if (error != std::errc() || rest != end)
    throw WrongUsage("ADDRESS", "give ADDRESS/PREFIX, the prefix a number");
  return {{"address", text.substr(0, slash)}, {"prefix", prefix}};
}

Json Ipv4Wish(const std::string& address, const std::string& mask) {
  if (address == "dhcp") {
    if (!mask.empty()) throw WrongUsage("NETMASK", "dhcp takes no netmask");
    return {{"method", "dhcp"}};
  }
  const bool prefixed = address.find('/') != std::string::npos;
  if (prefixed && !mask.empty())
    throw WrongUsage("NETMASK", "give a prefix or a netmask, not both");
  if (prefixed) return PrefixedAddress(address);
  if (mask.empty()) throw WrongUsage("ADDRESS", "give ADDRESS/PREFIX, ADDRESS NETMASK or dhcp");
  return {{"address", address}, {"netmask", mask}};
}

}  // namespace tool
