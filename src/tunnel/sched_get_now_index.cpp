// SPDX-License-Identifier: Apache-2.0
// The present hour of the week, as schedules of the appliance count them.
#include <ctime>

#include <zarnnetsdk/tunnel.h>

#include "frame/base/boundary.h"

using namespace frame;

int ZARNSchedGetNowIndex(void) {
  return Boundary(-1, [&]() -> int {
    constexpr int kHoursOfDay = 24;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::tzset();  // localtime_r() alone keeps the time zone of its first call
    if (::localtime_r(&now, &local) == nullptr) return 0;
    return local.tm_wday * kHoursOfDay + local.tm_hour;
  });
}
