// SPDX-License-Identifier: Apache-2.0
// What the tests of the platform share.
#pragma once

#include <cstdio>
#include <poll.h>

#include "support/appliance.h"

namespace test {

struct Hash {
  PKOPACSZHASH hash = KOPACSzHashAlloc(1);
  Hash() = default;
  ~Hash() { KOPACSzHashFree(hash); }
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;
};

// The error state as lines of the log show it, without the line's number: "0D00 key_file".
inline std::string ErrorNow() {
  char text[96];
  std::snprintf(text, sizeof text, "%04X %s", KOPACErrGet(), KOPACErrorGetFile());
  return text;
}
// A failure of somebody else's, which must not be taken for one that comes now.
inline void SetForeignError() {
  KOPACErrSetEx(0x7777, "foreign", 4711);
}

// Waits for what another process does, at most two seconds.
template <class Condition>
bool Comes(Condition condition) {
  for (int i = 0; i < 400 && !condition(); ++i)
    ::poll(nullptr, 0, 5);
  return condition();
}

}  // namespace test
