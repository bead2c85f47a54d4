// SPDX-License-Identifier: Apache-2.0
// How an operation of the platform fails: it sets the error state, naming itself, and answers. What
// is merely absent (a key, a line) is no failure and sets nothing.
#pragma once

#include <cerrno>
#include <cstddef>
#include <string_view>

#include <zarncore/zarncore.h>

namespace platform {

enum class Code : unsigned short {
  kNone = 0,
  kMemory = 0x0200,
  kLock = 0x0400,
  kOpen = 0x0900,  // a file, folder or socket
  kRead = 0x0A00,
  kWrite = 0x0B00,
  kArgument = 0x0D00,
  kRename = 0x2800,
  kProgram = 0x2A00,  // not started or failed; also a service or plugin call
  kContent = 0x4000,  // read, and not what it must be
};

// The source, without folder and extension, and the line that speak of a failure: the caller's, as
// a default argument. The compiler knows both.
struct Place {
  // NOLINTNEXTLINE(google-explicit-constructor): an empty list in a default argument makes it
  consteval Place(std::string_view file = __builtin_FILE(), int where = __builtin_LINE())
      : line(where) {
    file.remove_prefix(file.rfind('/') + 1);
    file.substr(0, file.find('.')).copy(source, sizeof source - 1);
  }
  char source[32] = {};
  int line;
};

// Sets the error state and answers as a failing operation does. The reason in errno stays.
inline int Fail(Code code, Place at = {}) {
  const int reason = errno;
  KOPACErrSetEx(static_cast<unsigned short>(code), at.source, at.line);
  errno = reason;
  return -1;
}

// The same where the answer is a pointer.
inline std::nullptr_t FailNull(Code code, Place at = {}) {
  Fail(code, at);
  return nullptr;
}

// The answer of an operation that has come to its end.
inline int Answer(Code code, Place at = {}) {
  return code == Code::kNone ? 0 : Fail(code, at);
}

// Why the system refused, of which errno says more.
inline Code CodeOf(Code refused) {
  return errno == ENOMEM ? Code::kMemory : refused;
}

}  // namespace platform
