// SPDX-License-Identifier: Apache-2.0
// The time that limits are measured by. It is asked of clock_gettime() and of nothing else.
#pragma once

#include <cstdint>
#include <ctime>

namespace platform {

inline constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
inline constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

// From a start of its own, and never set back.
inline std::int64_t NowNanoseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

}  // namespace platform
