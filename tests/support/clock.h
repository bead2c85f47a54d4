// SPDX-License-Identifier: Apache-2.0
// Time that passes faster, or is another, for the code under test.
#pragma once

#include <cstdint>

namespace test {

// From now on a second of the monotonic clock, and a second that poll() waits, last only a part of
// a real one.
void RunClockFaster(int factor);

// Somebody sets the time of day: from now on it is so many seconds off.
void SetWallClock(std::int64_t ahead);

}  // namespace test
