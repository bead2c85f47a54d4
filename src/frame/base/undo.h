// SPDX-License-Identifier: Apache-2.0
// The ways back of a change that is under way.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "frame/base/error.h"

namespace frame {

// Each step adds its way back; unless Keep() is called they are gone, last first, when the scope
// ends, on whatever path. A way back logs what it cannot do and leaves the error state to the
// failure before it; one that runs out of memory holds up none of the others.
class Undo {
 public:
  Undo() = default;
  ~Undo() {
    const ErrorUnchanged failure;
    for (auto way = ways_.rbegin(); way != ways_.rend(); ++way)
      Go(*way);
  }
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;

  // Where there is no memory to remember the way it is gone at once.
  void Add(std::function<void()> wayBack) {
    try {
      ways_.push_back(std::move(wayBack));
    } catch (...) {
      Go(wayBack);
      throw;
    }
  }
  void Keep() { ways_.clear(); }

 private:
  static void Go(const std::function<void()>& way) noexcept {
    try {
      way();
    } catch (...) {  // no memory: nobody is left to tell
    }
  }

  std::vector<std::function<void()>> ways_;
};

}  // namespace frame
