// The ways back of a change that is under way.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "frame/base/error.h"

namespace frame {

// Each step that succeeds adds its way back; unless Keep() is called they are gone, last first,
// when the scope ends, on whatever path. A way back throws nothing and logs what it cannot do.
class Undo {
 public:
  Undo() = default;
  ~Undo() {
    if (ways_.empty()) return;
    const KeepError keep;
    for (auto way = ways_.rbegin(); way != ways_.rend(); ++way)
      (*way)();
  }
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;

  void Add(std::function<void()> wayBack) { ways_.push_back(std::move(wayBack)); }
  void Keep() { ways_.clear(); }

 private:
  std::vector<std::function<void()>> ways_;
};

}  // namespace frame
