// SPDX-License-Identifier: Apache-2.0
// A request that failed, and the reason in words.
#include "failure.h"

#include <array>
#include <cstdio>

#include <zarncore/zarncore.h>

namespace tool {
std::string Failure::CodeText() const {
  if (!code_) return {};
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "0x%04X", *code_);
  return text.data();
}

std::string ReasonOf(Code code) {
  const char* const text = ZARNNetErrorText(code);
  return text != nullptr ? text : "unknown code";
}

void ForgetErrors() {
  ZARNNetErrorClear();
}

void Fail(const std::string& what) {
  const Code code = KOPACErrGet();
  // Some steps, such as a program of the system that fails, are told to the log alone.
  if (code == 0) throw Failure(what, std::nullopt, "no code was recorded; see the system log");
  throw Failure(what, code, ReasonOf(code));
}

}  // namespace tool
