// Log lines. The message stands whole at the call, prefix included, so that a reader who greps for
// a line of the log lands here; the macros fill in the prefix and the compiler checks the rest.
//   LOG_ERROR("%s:%d Set %s error.", path)          source name and line
//   LOG_ERROR_FUNC("%s(%d) KOPACFileLock failed.")  function name and line
//   LOG_ERROR_PLAIN("KOPAPluginSDKInit failed")     neither
#pragma once

#include <syslog.h>

#include "frame/error.h"

#define LOG_ERROR(format, ...) \
  ::syslog(LOG_ERR, format, FRAME_SOURCE, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LOG_WARN(format, ...) \
  ::syslog(LOG_WARNING, format, FRAME_SOURCE, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LOG_NOTE(format, ...) \
  ::syslog(LOG_INFO, format, FRAME_SOURCE, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LOG_DETAIL(format, ...) \
  ::syslog(LOG_DEBUG, format, FRAME_SOURCE, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LOG_ERROR_FUNC(format, ...) \
  ::syslog(LOG_ERR, format, __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LOG_ERROR_PLAIN(...) ::syslog(LOG_ERR, __VA_ARGS__)
#define LOG_DETAIL_PLAIN(...) ::syslog(LOG_DEBUG, __VA_ARGS__)

// A failed argument check in the assertion form: logs the condition as text and sets 0x0D00. The
// misspelling is part of the message, and tools that collect these lines look for it.
#define FRAME_INVALID_ARGUMENT(condition, result)                                                 \
  (::syslog(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", FRAME_SOURCE, __LINE__, condition, 0), \
   FRAME_FAIL(kBadParameter, result))
