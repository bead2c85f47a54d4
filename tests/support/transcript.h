// SPDX-License-Identifier: Apache-2.0
// What calls do to the appliance, as one text a test case. Each call adds its result, the error
// code of a failure, then in the order in which they happened the programs that were recorded, the
// plugin events, the log lines, the kernel's flags, MTUs and names that were set and the sleeps,
// and at last what is different in files and kernel. At its end the case is compared with
// golden/SUITE.CASE.txt beside its source; with ZARNNET_GOLDEN=write that text is written instead.
#pragma once

#include <string>
#include <string_view>

#include "support/appliance.h"

namespace test {

// Adds the call under this heading to the transcript; its result.
template <class Call>
long Tell(const std::string& heading, Call call);

// The same with the call's own words as the heading.
#define TELL(call) ::test::Tell(#call, [&] { return call; })

// Adds the call, and its code also where the result is no failure by itself.
template <class Call>
void TellCode(const std::string& heading, Call call);

// Adds a remark, or what was read back.
void Say(std::string_view remark);

// From now on a file that is written again with the text that it had is told of.
void TellRewrites();

// What differs from run to run or must not be seen: the group in the (extended) expression reads so
// from now on. A line of which nothing is left is left out.
void Mask(const std::string& expression, const std::string& with);

namespace transcript {
void Begin(const char* folder);
void End(const std::string& heading, long result);
std::string Code();
}  // namespace transcript

template <class Call>
long Tell(const std::string& heading, Call call) {
  transcript::Begin(ZARNNET_GOLDEN_FOLDER);
  const long result = call();
  transcript::End(heading, result);
  return result;
}

template <class Call>
void TellCode(const std::string& heading, Call call) {
  if (Tell(heading, call) >= 0 && KOPACErrGet() != 0) Say(transcript::Code().substr(2));
}

}  // namespace test
