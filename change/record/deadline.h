// SPDX-License-Identifier: Apache-2.0
// Until when a change waits: by the clock that runs since the start of the machine, also while it
// sleeps, and that nobody sets.
#pragma once

#include <string>

namespace change {

struct Deadline {
  std::string boot;           // the run of the machine that it belongs to
  long long until = 0;        // milliseconds since that began
  long seconds = 0;           // how long it was in all
  std::string untilWallTime;  // for people

  // Milliseconds; none in another run of the machine.
  [[nodiscard]] long long Left() const;
  [[nodiscard]] bool IsOver() const { return Left() <= 0; }
  [[nodiscard]] bool IsOfThisRun() const;
};

// The kernel's name for the time from one start of the machine to the next.
std::string RunOfTheMachine();

Deadline DeadlineIn(long seconds);
Deadline Extended(const Deadline& deadline, long seconds);

// Milliseconds since this run of the machine began, also asleep.
long long MillisecondsOfThisRun();

// Now, or so many seconds later, as "2026-11-22T05:45:06Z".
std::string WallTime(long long secondsFromNow = 0);

}  // namespace change
