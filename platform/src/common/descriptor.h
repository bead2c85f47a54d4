// SPDX-License-Identifier: Apache-2.0
// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>
#include <utility>

namespace platform {

class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : fd_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }

  [[nodiscard]] int Get() const { return fd_; }
  [[nodiscard]] int Release() { return std::exchange(fd_, -1); }
  // False when closing reports a failed write.
  bool Close() {
    const int fd = Release();
    return fd < 0 || ::close(fd) == 0;
  }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_;
};

}  // namespace platform
