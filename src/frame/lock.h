// A lock class of the appliance, held while this object lives. Waits at most 5 seconds for it.
#pragma once

#include <zarncore/zarncore.h>

namespace frame {

inline constexpr int kNetworkRead = 0x105;   // interface files, resolver files, routes, host name
inline constexpr int kNetworkWrite = 0x106;
inline constexpr int kServicePlugin = 0x1000006;

class Lock {
 public:
  explicit Lock(int classAndMode)
      : class_(classAndMode & ~0xFF), held_(KOPACFileLock(classAndMode, kWaitSeconds) == 0) {}
  ~Lock() {
    if (held_) KOPACFileUnlock(class_);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  [[nodiscard]] bool Held() const { return held_; }

 private:
  static constexpr int kWaitSeconds = 5;

  int class_;
  bool held_;
};

}  // namespace frame
