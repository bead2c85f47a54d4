// SPDX-License-Identifier: Apache-2.0
// Takes the place of the C library's clock_gettime, time and poll.
#include "support/clock.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

std::atomic<int> speed{1};
std::atomic<std::int64_t> since{0};  // when the clock got its speed
std::atomic<std::int64_t> ahead{0};  // how far it was ahead then; it never goes back
std::atomic<std::int64_t> wallAhead{0};

// The kernel's own two numbers, whatever timespec is.
int RealTime(clockid_t clock, std::int64_t* time) {
  long parts[2] = {};
  const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, parts));
  *time = parts[0] * kSecond + parts[1];
  return result;
}

}  // namespace

void test::RunClockFaster(int factor) {
  std::int64_t now = 0;
  RealTime(CLOCK_MONOTONIC, &now);
  ahead += (now - since) * (speed - 1);
  since = now;
  speed = factor;
}

void test::SetWallClock(std::int64_t ahead) {
  wallAhead = ahead;
}

// Visible to the platform libraries too.
#pragma GCC visibility push(default)
extern "C" {

int clock_gettime(clockid_t clock, timespec* result) noexcept {
  std::int64_t time = 0;
  const int answer = RealTime(clock, &time);
  if (clock == CLOCK_REALTIME) time += wallAhead * kSecond;
  if (clock == CLOCK_MONOTONIC) time += ahead + (time - since) * (speed - 1);
  result->tv_sec = static_cast<time_t>(time / kSecond);
  result->tv_nsec = static_cast<long>(time % kSecond);
  return answer;
}

time_t time(time_t* result) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}

int poll(pollfd* fds, nfds_t count, int milliseconds) {
  const int limit = (milliseconds + speed - 1) / speed;
  const timespec time{limit / 1000, limit % 1000 * 1000000L};
  return ::ppoll(fds, count, milliseconds < 0 ? nullptr : &time, nullptr);
}

}  // extern "C"
#pragma GCC visibility pop
