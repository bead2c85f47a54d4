// A number as dotted text.
#include <cstdio>

#include <zarnnetsdk/addr.h>

#include "frame/base/boundary.h"

using namespace frame;

const char* ZARNNetNtoa(uint32_t value) {
  return Boundary("", [&]() -> const char* {
    static char text[18];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", value >> 24, value >> 16 & 0xFF,
                  value >> 8 & 0xFF, value & 0xFF);
    return text;
  });
}
