// SPDX-License-Identifier: Apache-2.0
// The line that shows a change under way.
#include "progress.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace tool {

Progress::Progress(bool wanted) : shown_(wanted && ::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (!clock_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  changed_.notify_one();
  clock_.join();
  std::fputs("\r\x1b[K", stderr);
}

// Nothing is thrown through the library: a step that cannot be shown is not.
void Progress::Tell(const char* step, void* progress) try {
  auto* const self = static_cast<Progress*>(progress);
  if (!self->shown_) return;
  const auto told = nlohmann::json::parse(step);
  self->Begin("[" + told["step"].dump() + "/" + told["steps"].dump() + "] " +
              told["what"].get<std::string>());
} catch (const std::exception&) {
}

void Progress::Begin(const std::string& step) {
  const std::lock_guard lock(mutex_);
  step_ = step;
  begin_ = Clock::now();
  Paint();
  if (clock_.joinable()) return;
  // Signals are for the thread that makes the change, which holds them off until it has ended.
  sigset_t all{};
  sigset_t before{};
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  clock_ = std::thread([this] { Tick(); });
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Progress::Tick() {
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, std::chrono::seconds(1), [this] { return ended_; }))
    Paint();
}

void Progress::Paint() const {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin_);
  std::fprintf(stderr, "\r\x1b[K%s", step_.c_str());
  if (seconds.count() > 0) std::fprintf(stderr, " (%d s)", static_cast<int>(seconds.count()));
  std::fflush(stderr);
}

}  // namespace tool
