// SPDX-License-Identifier: Apache-2.0
// A program that may take longer than its caller wants to wait, watched by a process of its own.
#pragma once

#include <string>
#include <sys/types.h>

#include "frame/os/file.h"

namespace frame {

// The program runs with no other descriptors than /dev/null, and a file that is its own business,
// its leftover, is removed when it has ended, also when the caller has gone meanwhile. The
// processes between it and the caller log nothing and allocate nothing: in a caller with threads
// another thread's locks stay locked in them for good.
class WatchedCommand {
 public:
  // Without a path nothing runs, and the end comes at once. False when there is no process for it.
  [[nodiscard]] bool Start(const char* path, const char* argument, const char* leftover);
  WatchedCommand() = default;
  // What still runs goes on and is nobody's zombie.
  ~WatchedCommand();
  WatchedCommand(const WatchedCommand&) = delete;
  WatchedCommand& operator=(const WatchedCommand&) = delete;

  // Looks without waiting.
  [[nodiscard]] bool HasEnded();

  // After the end: kDone is exit status 0; kUnknown that the watching process has told nothing, for
  // it was killed, or is somebody else's to wait for.
  enum class Outcome { kDone, kFailed, kUnknown };
  [[nodiscard]] Outcome HowItEnded() const;

 private:
  pid_t watcher_ = -1;
  Descriptor told_;
};

}  // namespace frame
