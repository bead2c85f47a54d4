// The error state: the last code and the place that set it, one for each thread.
#include <cstdio>

#include <zarncore/zarncore.h>

namespace {

struct ErrorState {
  unsigned short code;
  int line;
  char file[64];
};

thread_local ErrorState state;

}  // namespace

void KOPACErrSetEx(unsigned short code, const char* szFile, int line) {
  state.code = code;
  state.line = line;
  std::snprintf(state.file, sizeof state.file, "%s", szFile != nullptr ? szFile : "");
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
