// SPDX-License-Identifier: Apache-2.0
// Removes all addresses of one family from an interface of the running kernel.
#include <string_view>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "ipv4/flush.h"

using namespace frame;

namespace {

// A missing name would make the command flush by its other words.
bool FlushV4(const char* ifname) {
  if (IsUnfitName(ifname)) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  return Run(paths::kIp, "-4", "address", "flush", "dev", ifname) ||
         Fail(ZARNNETERR_COMMAND, false);
}

bool FlushV6(const char* ifname) {
  if (IsUnfitName(ifname)) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  return ipv4::FlushV6(ifname);
}

}  // namespace

bool ipv4::FlushAddresses(const char* type, const char* ifname) {
  const std::string_view family = type != nullptr ? type : "";
  const char* const shown = ifname != nullptr ? ifname : "";
  if (family == "-4") {
    if (FlushV4(ifname)) return true;
    LOG_ERROR("%s:%d Failed to flush ipv4 address on [%s]", shown);
  } else if (family == "-6") {
    if (::FlushV6(ifname)) return true;
    LOG_ERROR("%s:%d Failed to flush ipv6 address on [%s]", shown);
  } else {
    LOG_ERROR("%s:%d ip type is wrong, only -4 or -6");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  return false;
}

int ZARNNetFlushIP(const char* szType, const char* szIfname) {
  return Boundary(-1, [&]() -> int { return ipv4::FlushAddresses(szType, szIfname) ? 0 : -1; });
}
