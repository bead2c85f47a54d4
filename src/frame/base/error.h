// SPDX-License-Identifier: Apache-2.0
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

// While it lives failures leave no trace in the error state: for steps whose failure is ignored,
// and for ways back, behind which the state is to tell of what has sent the call there.
class ErrorUnchanged {
 public:
  ErrorUnchanged();
  ~ErrorUnchanged();
  ErrorUnchanged(const ErrorUnchanged&) = delete;
  ErrorUnchanged& operator=(const ErrorUnchanged&) = delete;

 private:
  InnerError before_;
  char file_[48];  // the state's own text may go with the next failure
};

}  // namespace frame
