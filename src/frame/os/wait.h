// Waiting for others: a kernel, a program, a plugin.
#pragma once

#include <unistd.h>

namespace frame {

// Sleeps all of it: a signal cuts a single sleep short.
inline void WaitSeconds(unsigned seconds) {
  while (seconds > 0)
    seconds = ::sleep(seconds);
}

}  // namespace frame
