// Do two IPv6 addresses agree in their prefix?
#include <arpa/inet.h>
#include <cstring>
#include <optional>

#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"

using namespace frame;

namespace {

std::optional<in6_addr> Parse(const char* text) {
  in6_addr address{};
  if (::inet_pton(AF_INET6, text, &address) == 1) return address;
  LOG_ERROR("%s:%d Invalid network address: %s", text);
  return std::nullopt;
}

bool AgreeInPrefix(const in6_addr& a, const in6_addr& b, unsigned prefix) {
  const unsigned whole = prefix / 8;
  const unsigned rest = prefix % 8;
  if (std::memcmp(a.s6_addr, b.s6_addr, whole) != 0) return false;
  return rest == 0 || ((a.s6_addr[whole] ^ b.s6_addr[whole]) >> (8 - rest)) == 0;
}

}  // namespace

int ZARNNetIPv6IsSameSubnet(const char* szAddrA, const char* szAddrB, unsigned int prefix) {
  return Boundary(-1, [&]() -> int {
    if (szAddrA == nullptr || szAddrB == nullptr || prefix > 128) {
      LOG_ERROR("%s:%d Bad parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto a = Parse(szAddrA);
    if (!a) return -1;
    const auto b = Parse(szAddrB);
    if (!b) return -1;
    return AgreeInPrefix(*a, *b, prefix) ? 1 : 0;
  });
}
