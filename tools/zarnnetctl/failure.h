// SPDX-License-Identifier: Apache-2.0
// A request that failed: what was tried, the library's code, and the reason in words.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include <zarnnetsdk/error.h>

namespace tool {

using Code = std::uint16_t;

class Failure : public std::exception {
 public:
  Failure(std::string what, std::optional<Code> code, std::string reason)
      : what_(std::move(what)), code_(code), reason_(std::move(reason)) {}

  [[nodiscard]] const char* what() const noexcept override { return what_.c_str(); }
  [[nodiscard]] const std::string& Reason() const { return reason_; }
  // As "0x0D00"; empty where no code was recorded.
  [[nodiscard]] std::string CodeText() const;

 private:
  std::string what_;
  std::optional<Code> code_;
  std::string reason_;
};

// The words for a code of the library.
std::string ReasonOf(Code code);

// Empties the error state, so that a code found there later belongs to the calls made since.
void ForgetErrors();

// Throws with the code that the library recorded since ForgetErrors().
[[noreturn]] void Fail(const std::string& what);

}  // namespace tool
