// SPDX-License-Identifier: Apache-2.0
// The error state: the last code and the place that set it, one for each thread.
#include <zarncore/zarncore.h>

#include "common/text.h"

namespace {

struct ErrorState {
  unsigned short code;
  int line;
  char file[64];
};

// Room that every thread has from its start: to set an error must not need memory.
[[gnu::tls_model("initial-exec")]] thread_local ErrorState state;

}  // namespace

void KOPACErrSetEx(unsigned short code, const char* szFile, int line) {
  state.code = code;
  state.line = line;
  platform::CopyCut(szFile != nullptr ? szFile : "", state.file, sizeof state.file);
}

unsigned short KOPACErrGet(void) {
  return state.code;
}

const char* KOPACErrorGetFile(void) {
  return state.file;
}

int KOPACErrorGetLine(void) {
  return state.line;
}
