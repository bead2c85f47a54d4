// SPDX-License-Identifier: Apache-2.0
// A password on its way into the settings, from a file or from standard input, where no other
// process sees it; nothing of it stays behind.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <string>

namespace tool {

class Secret {
 public:
  static constexpr std::size_t kSize = 32;  // of the fields of the records, terminator included

  // The first line of the file; "-" is standard input. Throws for one that does not fit.
  Secret(const std::string& what, const std::string& path);
  ~Secret();
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  void CopyTo(char (&field)[kSize]) const { std::memcpy(field, line_.data(), kSize); }

 private:
  void Read(const std::string& what, const std::string& path, std::istream& input);

  std::array<char, kSize + 1> line_{};  // room to see that one is longer
};

}  // namespace tool
