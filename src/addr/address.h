// IPv4 and IPv6 addresses as bytes, for what is computed the same way for both.
#pragma once

#include <array>
#include <optional>

namespace addr {

// In network order; an IPv4 address is followed by zeros.
using Bytes = std::array<unsigned char, 16>;

struct Address {
  int family;
  Bytes bytes;
};

// Null is text that does not parse.
std::optional<Bytes> ParseAs(int family, const char* text);
std::optional<Address> Parse(const char* text);

}  // namespace addr
