// SPDX-License-Identifier: Apache-2.0
// Do two IPv6 addresses agree in their prefix?
#include <algorithm>
#include <optional>

#include <zarnnetsdk/ipv6.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "ipv6/config.h"

using namespace frame;

namespace {

std::optional<Ipv6> Parse(const char* text) {
  const auto address = ParseIpv6(text);
  if (address) return address;
  LOG_ERROR("%s:%d Invalid network address: %s", text);
  return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
}

bool AgreeInPrefix(const Ipv6& a, const Ipv6& b, unsigned prefix) {
  const unsigned whole = prefix / 8;
  const unsigned rest = prefix % 8;
  if (!std::equal(a.begin(), a.begin() + whole, b.begin())) return false;
  return rest == 0 || ((a[whole] ^ b[whole]) >> (8 - rest)) == 0;
}

}  // namespace

int ZARNNetIPv6IsSameSubnet(const char* szAddrA, const char* szAddrB, unsigned int prefix) {
  return Boundary(-1, [&]() -> int {
    if (szAddrA == nullptr || szAddrB == nullptr || prefix > ipv6::kMaxPrefix) {
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
