// SPDX-License-Identifier: Apache-2.0
// The place in the sources that a log line or an error speaks of: the file without its folder and
// extension ("net_set_ip"), the line and the function.
#pragma once

#include <cstddef>

namespace frame {

// As a default argument, `Place at = {}`, it is the caller's place: so what several sources share
// speaks in the name of the one that called. Everything is known to the compiler; nothing is
// computed at run time.
struct Place {
  char source[48] = {};
  int line;
  const char* function;

  // NOLINTNEXTLINE(google-explicit-constructor): `= {}` is how it is asked for
  consteval Place(const char* file = __builtin_FILE(), int lineOfFile = __builtin_LINE(),
                  const char* caller = __builtin_FUNCTION())
      : line(lineOfFile), function(caller) {
    const char* stem = file;
    for (const char* at = file; *at != '\0'; ++at) {
      if (*at == '/') stem = at + 1;
    }
    for (std::size_t i = 0; stem[i] != '\0' && stem[i] != '.'; ++i)
      source[i] = stem[i];  // a name that does not fit does not compile
  }
};

}  // namespace frame
