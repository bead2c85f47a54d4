// IPv4 netmasks: which texts are one, and how many bits they cover.
#include <algorithm>
#include <arpa/inet.h>
#include <bit>
#include <cstring>

#include <zarnnetsdk/addr.h>

#include "addr/dotted.h"
#include "frame/log.h"
#include "frame/text.h"

using namespace frame;

namespace {

// Reads a netmask of at least one bit into the parts; 0x1000 when it is none.
bool ReadMask(const char* szMask, unsigned (&part)[4]) {
  if (cKOPAISepIP(szMask, part) != 4) return false;
  if (cKOPAICalMask(part) != 0) return true;
  FRAME_SET_ERROR(kMalformedAddress);
  return false;
}

}  // namespace

int cKOPAICalMask(const unsigned int rgPart[4]) {
  if (rgPart == nullptr) return FRAME_FAIL(kBadParameter, 0);
  if (std::any_of(rgPart, rgPart + 4, [](unsigned part) { return part > 255; })) {
    return FRAME_FAIL(kMalformedAddress, 0);
  }
  const std::uint32_t mask = addr::ToValue({rgPart[0], rgPart[1], rgPart[2], rgPart[3]});
  const int prefix = std::countl_one(mask);
  if (std::popcount(mask) != prefix) return FRAME_FAIL(kMalformedAddress, 0);
  return prefix;
}

int BlKOPAIsIpMask(char* szMask) try {
  if (szMask == nullptr) return FRAME_FAIL(kBadParameter, 0);
  unsigned part[4];
  if (!ReadMask(szMask, part)) return 0;
  // No part is shorter than its decimal form, so the text has room for it.
  CopyText(addr::DottedText(addr::ToValue(part)), szMask, std::strlen(szMask) + 1);
  return 1;
}
FRAME_NO_EXCEPTIONS(0)

int BlKOPAIsValidIpMask(const char* szMask) {
  if (szMask == nullptr) return FRAME_INVALID_ARGUMENT("NULL != szMask", 0);
  // The splitter would judge the beginning only, and callers store the whole text.
  if (std::strlen(szMask) >= addr::kDottedSize) return FRAME_FAIL(kMalformedAddress, 0);
  unsigned part[4];
  return ReadMask(szMask, part) ? 1 : 0;
}

int ZARNNetNetmaskToPrefix(const char* szMask) {
  if (szMask == nullptr) return FRAME_FAIL(kBadParameter, -1);
  in_addr mask{};
  if (::inet_aton(szMask, &mask) == 0) return -1;
  return std::popcount(mask.s_addr);
}
