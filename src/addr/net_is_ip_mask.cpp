// IPv4 netmasks: which texts are one, and how many bits they cover.
#include <algorithm>
#include <arpa/inet.h>
#include <bit>
#include <cstring>

#include <zarnnetsdk/addr.h>

#include "addr/dotted.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

// Reads a netmask of at least one bit into the parts; 0x1000 when it is none.
bool ReadMask(const char* szMask, unsigned (&part)[4]) {
  if (cKOPAISepIP(szMask, part) != 4) return false;
  if (cKOPAICalMask(part) != 0) return true;
  SetError(ZARNNETERR_MALFORMED_ADDRESS);
  return false;
}

}  // namespace

int cKOPAICalMask(const unsigned int rgPart[4]) {
  return Boundary(0, [&]() -> int {
    if (rgPart == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    if (std::any_of(rgPart, rgPart + 4, [](unsigned part) { return part > 255; })) {
      return Fail(ZARNNETERR_MALFORMED_ADDRESS, 0);
    }
    const std::uint32_t mask = addr::ToValue({rgPart[0], rgPart[1], rgPart[2], rgPart[3]});
    const int prefix = std::countl_one(mask);
    if (std::popcount(mask) != prefix) return Fail(ZARNNETERR_MALFORMED_ADDRESS, 0);
    return prefix;
  });
}

int BlKOPAIsIpMask(char* szMask) {
  return Boundary(0, [&]() -> int {
    if (szMask == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    unsigned part[4];
    if (!ReadMask(szMask, part)) return 0;
    // No part is shorter than its decimal form, so the text has room for it.
    CopyText(addr::DottedText(addr::ToValue(part)), szMask, std::strlen(szMask) + 1);
    return 1;
  });
}

int BlKOPAIsValidIpMask(const char* szMask) {
  return Boundary(0, [&]() -> int {
    if (szMask == nullptr) return InvalidArgument("NULL != szMask", 0);
    // The splitter would judge the beginning only, and callers store the whole text.
    if (std::strlen(szMask) >= addr::kDottedSize) return Fail(ZARNNETERR_MALFORMED_ADDRESS, 0);
    unsigned part[4];
    return ReadMask(szMask, part) ? 1 : 0;
  });
}

int ZARNNetNetmaskToPrefix(const char* szMask) {
  return Boundary(-1, [&]() -> int {
    if (szMask == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    in_addr mask{};
    if (::inet_aton(szMask, &mask) == 0) return -1;
    return std::popcount(mask.s_addr);
  });
}
