// SPDX-License-Identifier: Apache-2.0
// A request that failed: what was tried, the library's code, the reason in words, and the exit
// status that goes with it.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include <zarnnetsdk/error.h>

namespace tool {

using Code = std::uint16_t;

// Those of a change are its results, ZARNNETCHANGE_...; what is read or set otherwise has the same.
enum ExitStatus {
  kDone = 0,
  kFailed = 1,
  kUsage = 2,
  kRefused = 3,
  kOtherwise = 4,
  kBusy = 5,
  kNotAllowed = 6,
  kNotFound = 7,
};

class Failure : public std::exception {
 public:
  // The code tells the exit status where none is given.
  Failure(std::string what, std::optional<Code> code, std::string reason,
          std::optional<ExitStatus> status = std::nullopt)
      : what_(std::move(what)), code_(code), reason_(std::move(reason)), status_(status) {}

  [[nodiscard]] const char* what() const noexcept override { return what_.c_str(); }
  [[nodiscard]] const std::string& Reason() const { return reason_; }
  // As "0x0D00"; empty where no code was recorded.
  [[nodiscard]] std::string CodeText() const;
  [[nodiscard]] ExitStatus Status() const;
  // The same for another reason.
  [[nodiscard]] Failure Because(std::string reason) const {
    return {what_, code_, std::move(reason), status_};
  }
  [[nodiscard]] std::optional<Code> CodeOf() const { return code_; }

 private:
  std::string what_;
  std::optional<Code> code_;
  std::string reason_;
  std::optional<ExitStatus> status_;
};

// Whether it is a value that the library does not take, and nothing says which.
bool IsBare(const Failure& failure);

// The words for a code of the library.
std::string ReasonOf(Code code);

// Empties the error state, so that a code found there later belongs to the calls made since.
void ForgetErrors();

// Throws with the code that the library recorded since ForgetErrors().
[[noreturn]] void Fail(const std::string& what);

}  // namespace tool
