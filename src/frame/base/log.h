// SPDX-License-Identifier: Apache-2.0
// Log lines. The message stands whole at the call, prefix included, so that a reader who greps for
// a line of the log lands here; the macros fill in the prefix and the compiler checks the rest.
//   LOG_ERROR("%s:%d Set %s error.", path)              source name and line
//   LOG_ERROR_AT(at, "%s:%d Set %s error.", path)       those of the caller, in what callers share
//   LOG_ERROR_FUNC(at, "%s(%d) KOPACFileLock failed.")  the function of a Place, and this line
//   LOG_ERROR_PLAIN("KOPAPluginSDKInit failed")         neither
#pragma once

#include <syslog.h>

#include "frame/base/error.h"

#define FRAME_LOG_AT(priority, at, format, ...) \
  ::syslog(priority, format, (at).source, (at).line __VA_OPT__(, ) __VA_ARGS__)

#define LOG_ERROR(...) FRAME_LOG_AT(LOG_ERR, ::frame::Place(), __VA_ARGS__)
#define LOG_WARN(...) FRAME_LOG_AT(LOG_WARNING, ::frame::Place(), __VA_ARGS__)
#define LOG_NOTE(...) FRAME_LOG_AT(LOG_INFO, ::frame::Place(), __VA_ARGS__)
#define LOG_DETAIL(...) FRAME_LOG_AT(LOG_DEBUG, ::frame::Place(), __VA_ARGS__)
#define LOG_ERROR_AT(at, ...) FRAME_LOG_AT(LOG_ERR, at, __VA_ARGS__)
#define LOG_WARN_AT(at, ...) FRAME_LOG_AT(LOG_WARNING, at, __VA_ARGS__)
#define LOG_NOTE_AT(at, ...) FRAME_LOG_AT(LOG_INFO, at, __VA_ARGS__)
#define LOG_DETAIL_AT(at, ...) FRAME_LOG_AT(LOG_DEBUG, at, __VA_ARGS__)
#define LOG_ERROR_FUNC(at, format, ...) \
  ::syslog(LOG_ERR, format, (at).function, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LOG_ERROR_PLAIN(...) ::syslog(LOG_ERR, __VA_ARGS__)
#define LOG_DETAIL_PLAIN(...) ::syslog(LOG_DEBUG, __VA_ARGS__)

namespace frame {

// A failed argument check in the assertion form: logs the condition as text and sets 0x0D00. The
// misspelling is part of the message, and tools that collect these lines look for it.
template <class Result>
Result InvalidArgument(const char* condition, Result result, const Place& at = {}) {
  LOG_ERROR_AT(at, "%s:%d Invaild Argument (%s)=[%d]\n", condition, 0);
  return Fail(ZARNNETERR_BAD_PARAMETER, result, at);
}

}  // namespace frame
