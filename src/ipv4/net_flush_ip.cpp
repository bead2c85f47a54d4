// Removes all addresses of one family from an interface of the running kernel.
#include <string_view>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

namespace {

// A missing name would make the command flush by its other words.
bool FlushV4(const char* ifname) {
  return !IsEmpty(ifname) && Run(paths::kIp, "-4", "address", "flush", "dev", ifname);
}

}  // namespace

int ZARNNetFlushIP(const char* szType, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    const std::string_view type = szType != nullptr ? szType : "";
    const char* const shown = szIfname != nullptr ? szIfname : "";
    if (type == "-4") {
      if (FlushV4(szIfname)) return 0;
      LOG_ERROR("%s:%d Failed to flush ipv4 address on [%s]", shown);
    } else if (type == "-6") {
      if (ZARNLnxIPv6FlushAddr(szIfname) == 0) return 0;
      LOG_ERROR("%s:%d Failed to flush ipv6 address on [%s]", shown);
    } else {
      LOG_ERROR("%s:%d ip type is wrong, only -4 or -6");
    }
    return -1;
  });
}
