// The error state. A code is set where the fault is found; callers on the way up leave it alone and
// log it.
#pragma once

#include <zarnnetsdk/error.h>

#include "frame/base/place.h"

namespace frame {

void SetError(ZARNNETERROR code, const Place& at = {});

// Sets the code and yields the caller's result: return Fail(ZARNNETERR_OPEN, -1);
template <class Result>
Result Fail(ZARNNETERROR code, Result result, const Place& at = {}) {
  SetError(code, at);
  return result;
}

// The failure that the error state tells of, for lines that relay it: "[0x%04X %s:%d]".
struct InnerError {
  InnerError();

  unsigned code;
  const char* file;
  int line;
};

// Keeps the error state as it is until its scope ends, around what is done because of a failure or
// whatever comes of it: the code that a caller finds is that of the failure which ended the call.
class KeepError {
 public:
  KeepError();
  ~KeepError();
  KeepError(const KeepError&) = delete;
  KeepError& operator=(const KeepError&) = delete;

 private:
  unsigned short code_;
  char file_[64];
  int line_;
};

}  // namespace frame
