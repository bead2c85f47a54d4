// SPDX-License-Identifier: Apache-2.0
// Waiting for others: a kernel, a program, a plugin.
#pragma once

#include <functional>
#include <unistd.h>

namespace frame {

// Sleeps all of it: a signal cuts a single sleep short.
inline void WaitSeconds(unsigned seconds) {
  while (seconds > 0)
    seconds = ::sleep(seconds);
}

// Waits while something is unsettled, up to 5 seconds, and looks twice a second.
inline void WaitWhile(const std::function<bool()>& isUnsettled) {
  constexpr int kTries = 10;
  constexpr useconds_t kPause = 500'000;
  for (int i = 0; i < kTries && isUnsettled(); ++i)
    ::usleep(kPause);
}

}  // namespace frame
