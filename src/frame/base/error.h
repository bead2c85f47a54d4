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

}  // namespace frame
