// IPv4 and IPv6 addresses as bytes, for what is computed the same way for both.
#include "addr/address.h"

#include <arpa/inet.h>

namespace addr {

std::optional<Bytes> ParseAs(int family, const char* text) {
  Bytes bytes{};
  if (text == nullptr || ::inet_pton(family, text, bytes.data()) != 1) return std::nullopt;
  return bytes;
}

std::optional<Address> Parse(const char* text) {
  for (const int family : {AF_INET, AF_INET6}) {
    if (const auto bytes = ParseAs(family, text)) return Address{family, *bytes};
  }
  return std::nullopt;
}

}  // namespace addr
