// SPDX-License-Identifier: Apache-2.0
// An IPv4 address and its prefix or netmask, as typed on the command line.
#include "typed_address.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "verbs.h"

namespace tool {
namespace {

bool IsNumber(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](unsigned char digit) { return std::isdigit(digit) != 0; });
}

[[noreturn]] void RefuseAddress(const std::string& what, const std::string& problem) {
  throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS, problem);
}

std::string PrefixToMask(const std::string& what, const std::string& cidr) {
  std::array<char, 64> text{};
  if (cidr.size() < text.size()) {
    std::copy(cidr.begin(), cidr.end(), text.begin());
    if (ErrKOPASubnetToIpMask(text.data(), nullptr) == 0) {
      const std::string converted(text.data());
      return converted.substr(converted.find('/') + 1);
    }
  }
  RefuseAddress(what, "the prefix of " + cidr + " must be 1 to 32");
}

}  // namespace

Typed TakeApart(const std::string& address, const std::string& mask) {
  const std::size_t slash = address.find('/');
  if (slash == std::string::npos) {
    if (mask.empty()) throw WrongUsage("ADDRESS", "give ADDRESS/PREFIX or ADDRESS NETMASK");
    return {address, "", mask};
  }
  if (!mask.empty()) throw WrongUsage("NETMASK", "give a prefix or a netmask, not both");
  Typed typed{address.substr(0, slash), address.substr(slash + 1), ""};
  if (!IsNumber(typed.prefix)) throw WrongUsage("ADDRESS", "the prefix must be a number");
  return typed;
}

Address Validate(const std::string& what, const Typed& typed) {
  RequireIpv4(what, typed.ip);
  if (typed.mask.empty()) return {typed.ip, PrefixToMask(what, typed.ip + "/" + typed.prefix)};
  if (BlKOPAIsValidIpMask(typed.mask.c_str()) != 1 || !IsPlainDotted(typed.mask)) {
    RefuseAddress(what, "'" + typed.mask + "' is not a netmask");
  }
  return {typed.ip, typed.mask};
}

}  // namespace tool
