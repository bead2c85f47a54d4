// SPDX-License-Identifier: Apache-2.0
// What a change is doing, on a terminal: one line that is written over, whose clock goes on while a
// step takes its time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tool {

class Progress {
 public:
  // Shows nothing where standard error is no terminal.
  explicit Progress(bool wanted);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // As the library calls it: what it tells, and a Progress.
  static void Tell(const char* step, void* progress);

 private:
  using Clock = std::chrono::steady_clock;

  void Begin(const std::string& step);
  void Tick();
  void Paint() const;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool shown_;
  bool ended_ = false;
  std::string step_;
  Clock::time_point begin_;
  std::thread clock_;
};

}  // namespace tool
