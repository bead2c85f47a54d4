// What a change has done so far, so that it can be taken back when a later step fails.
#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace ipv6 {

class Steps {
 public:
  void Done(std::function<void()> takeBack) { takeBack_.push_back(std::move(takeBack)); }

  // The last step first.
  void TakeBack() {
    for (auto step = takeBack_.rbegin(); step != takeBack_.rend(); ++step)
      (*step)();
    takeBack_.clear();
  }

 private:
  std::vector<std::function<void()>> takeBack_;
};

}  // namespace ipv6
