// SPDX-License-Identifier: Apache-2.0
// What the library is shown beside: the other ways to the same answers that a Linux machine offers.
#pragma once

#include <string>

namespace peers {

// ---- the interfaces with flags, MAC, address and mask; how many, or -1
int ByGetifaddrs();  // the list as it comes, without records made of it
int ByNetlink();  // one dump of the links and one of the IPv4 addresses, over a socket of its own
int ByLibnl();    // the same through libnl's caches

// ---- key files; GLib's kind has a section in its first line
inline constexpr char kSection[] = "keys";
bool ReadKeyByGlib(const std::string& path, const char* key);
bool EditFourKeysByGlib(const std::string& path, const char* value);

// ---- flock; both wait as long as it takes
class Flock {
 public:
  explicit Flock(const char* path);
  ~Flock();
  Flock(const Flock&) = delete;
  Flock& operator=(const Flock&) = delete;
  void Take() const;
  void Release() const;

 private:
  int fd_;
};

}  // namespace peers
