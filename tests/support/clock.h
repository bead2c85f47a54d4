// SPDX-License-Identifier: Apache-2.0
// Time that passes faster for the code under test.
#pragma once

namespace test {

// From now on a second of the monotonic clock, and a second that poll() waits, last only a part of
// a real one.
void RunClockFaster(int factor);

}  // namespace test
