// SPDX-License-Identifier: Apache-2.0
// A request that failed, and the reason in words.
#include "failure.h"

#include <array>
#include <cstdio>
#include <unistd.h>

#include <zarncore/zarncore.h>

namespace tool {
std::string Failure::CodeText() const {
  if (!code_) return {};
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "0x%04X", *code_);
  return text.data();
}

ExitStatus Failure::Status() const {
  if (status_) return *status_;
  switch (code_.value_or(0)) {
    case ZARNNETERR_BAD_PARAMETER:
    case ZARNNETERR_HOSTNAME_LENGTH:
    case ZARNNETERR_MALFORMED_ADDRESS:
      return kUsage;
    case ZARNNETERR_REFUSED:
    case ZARNNETERR_EXISTS:
      return kRefused;
    case ZARNNETERR_LOCK:
      return kBusy;
    case ZARNNETERR_NOT_FOUND:
      return kNotFound;
    default:
      return kFailed;
  }
}

bool IsBare(const Failure& failure) {
  return failure.CodeOf() == ZARNNETERR_BAD_PARAMETER &&
         failure.Reason() == ReasonOf(ZARNNETERR_BAD_PARAMETER);
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
  if (code == 0) throw Failure(what, std::nullopt, "a step of it failed; the system log has more");
  if (code == ZARNNETERR_LOCK && ::geteuid() != 0)
    throw Failure(what, code, "only root may do this", kNotAllowed);
  throw Failure(what, code, ReasonOf(code));
}

}  // namespace tool
