// Error codes and the error state. A code is set where the fault is found; callers on the way up
// leave it alone and log it with FRAME_INNER_ERROR.
#pragma once

#include <zarncore/zarncore.h>

#include "frame/place.h"

namespace frame {

enum class Error : unsigned short {
  kTableFull = 0x0100,  // a table of fixed size is full, or could not grow
  kNoMemory = 0x0200,
  kLock = 0x0400,  // the network lock was not had in time
  kOpen = 0x0900,
  kRead = 0x0A00,
  kWrite = 0x0B00,
  kBadParameter = 0x0D00,
  kHostnameLength = 0x0E00,
  kMalformedAddress = 0x1000,
  kRename = 0x2800,
  kCommand = 0x2A00,  // a program or a send failed
  kVlanQuery = 0x3400,
  kUnexpectedContent = 0x4000,  // a kernel file reads otherwise than it should
  kRefused = 0x8100,
  kExists = 0xBB00,
  kNotFound = 0xBC00,
  kSlavesFull = 0xBD00,
};

// Sets the code and passes the caller's result through: `return Failed(...)`.
template <class Result>
Result Failed(Error code, const char* source, int line, Result result) {
  KOPACErrSetEx(static_cast<unsigned short>(code), source, line);
  return result;
}

// For the catch-all at the end of an exported function: whatever the standard library throws here
// is memory that could not be had.
template <class Result>
Result OutOfMemory(const char* source, int line, Result result) {
  KOPACErrSetEx(static_cast<unsigned short>(Error::kNoMemory), source, line);
  return result;
}

}  // namespace frame

#define FRAME_SET_ERROR(code) \
  KOPACErrSetEx(static_cast<unsigned short>(::frame::Error::code), FRAME_SOURCE, __LINE__)

// Sets the code and yields the result: return FRAME_FAIL(kBadParameter, -1);
#define FRAME_FAIL(code, result) \
  ::frame::Failed(::frame::Error::code, FRAME_SOURCE, __LINE__, (result))

// The arguments of "[0x%04X %s:%d]".
#define FRAME_INNER_ERROR KOPACErrGet(), KOPACErrorGetFile(), KOPACErrorGetLine()

// Closes the function-try-block of an exported function: no exception crosses the C interface.
#define FRAME_NO_EXCEPTIONS(result)                                \
  catch (...) {                                                    \
    return ::frame::OutOfMemory(FRAME_SOURCE, __LINE__, (result)); \
  }
