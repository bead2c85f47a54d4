// SPDX-License-Identifier: Apache-2.0
// A number as dotted text.
#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/text.h"

using namespace frame;

const char* ZARNNetNtoa(uint32_t value) {
  return Boundary("", [&]() -> const char* {
    static char text[18];
    CopyText(DottedText(Ipv4(value)), text);
    return text;
  });
}
