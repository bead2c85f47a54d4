// IPv4 addresses as an administrator types them: split into numbers, accepted for a host, told
// private.
#include <algorithm>
#include <cstring>

#include <zarnnetsdk/addr.h>

#include "addr/dotted.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"

using namespace frame;

int cKOPAISepIP(const char* szIP, unsigned int rgPart[4]) {
  return Boundary(0, [&]() -> int {
    if (szIP == nullptr || rgPart == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    char text[addr::kDottedSize];
    CopyText(szIP, text);
    const char* rest = text;
    for (int i = 0; i < 3; ++i) {
      const auto number = addr::TakeNumber(&rest);
      if (!number) return Fail(ZARNNETERR_MALFORMED_ADDRESS, i);
      rgPart[i] = *number;
      if (*rest != '.') return Fail(ZARNNETERR_MALFORMED_ADDRESS, i + 1);
      ++rest;
    }
    const auto last = addr::TakeNumber(&rest);
    if (!last || *rest != '\0') return Fail(ZARNNETERR_MALFORMED_ADDRESS, 3);
    rgPart[3] = *last;
    return 4;
  });
}

int BlKOPAIsIpAddr(const char* szIP) {
  return Boundary(0, [&]() -> int {
    constexpr unsigned kLoopback = 127;
    constexpr unsigned kLastUnicast = 223;
    if (szIP == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    // The splitter would judge the beginning only, and callers store the whole text.
    if (std::strlen(szIP) >= addr::kDottedSize) return Fail(ZARNNETERR_MALFORMED_ADDRESS, 0);
    unsigned part[4];
    if (cKOPAISepIP(szIP, part) != 4) return 0;
    if (part[0] == kLoopback || part[0] > kLastUnicast)
      return Fail(ZARNNETERR_MALFORMED_ADDRESS, 0);
    if (std::any_of(part + 1, part + 4, [](unsigned number) { return number > 255; })) {
      return Fail(ZARNNETERR_MALFORMED_ADDRESS, 0);
    }
    return 1;
  });
}

int ZARNNetIsPrivateIP(const char* szIP) {
  return Boundary(0, [&]() -> int {
    unsigned part[4];
    if (cKOPAISepIP(szIP, part) != 4) return 0;
    switch (part[0]) {
      case 10:
      case 127:
        return 1;
      case 169:
        return part[1] == 254 ? 1 : 0;
      case 172:
        return part[1] >= 16 && part[1] <= 31 ? 1 : 0;
      case 192:
        return part[1] == 168 ? 1 : 0;
      default:
        return 0;
    }
  });
}
