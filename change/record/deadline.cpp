// SPDX-License-Identifier: Apache-2.0
#include "record/deadline.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>

namespace change {
namespace {

constexpr char kBootId[] = "/proc/sys/kernel/random/boot_id";
constexpr long long kSecond = 1000;

}  // namespace

long long MillisecondsOfThisRun() {
  constexpr long kMillisecond = 1000000;
  timespec time{};
  ::clock_gettime(CLOCK_BOOTTIME, &time);
  return time.tv_sec * kSecond + time.tv_nsec / kMillisecond;
}

std::string RunOfTheMachine() {
  std::ifstream file(kBootId);
  std::string id;
  std::getline(file, id);
  return id;
}

bool Deadline::IsOfThisRun() const {
  return boot == RunOfTheMachine();
}

long long Deadline::Left() const {
  return IsOfThisRun() ? std::max(until - MillisecondsOfThisRun(), 0LL) : 0;
}

Deadline DeadlineIn(long seconds) {
  return {RunOfTheMachine(), MillisecondsOfThisRun() + seconds * kSecond, seconds,
          WallTime(seconds)};
}

Deadline Extended(const Deadline& deadline, long seconds) {
  Deadline extended = deadline;
  extended.until += seconds * kSecond;
  extended.seconds += seconds;
  extended.untilWallTime = WallTime(extended.Left() / kSecond);
  return extended;
}

std::string WallTime(long long secondsFromNow) {
  const auto time = static_cast<std::time_t>(std::time(nullptr) + secondsFromNow);
  std::tm utc{};
  std::array<char, 32> text{};
  ::gmtime_r(&time, &utc);
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text.data();
}

}  // namespace change
