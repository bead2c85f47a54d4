// SPDX-License-Identifier: Apache-2.0
// What ipcalc is asked, and what is made of its answers.
#include <zarnnetsdk/addr.h>

#include "support/transcript.h"

using namespace test;

namespace {

constexpr char kIpcalc[] = "/bin/ipcalc";

TEST(Ipcalc, IsAskedForOneAddressAndItsLineTaken) {
  const char* const outputs[] = {"BROADCAST=10.255.255.255\nNETWORK=10.0.0.0\n",
                                 "NETWORK=10.0.0.0\n",
                                 " \tBROADCAST=10.255.255.255 \n",
                                 " NETWORK=10.0.0.0\n",
                                 "",
                                 "\n",
                                 "BROADCAST=\n",
                                 "NETWORK\n",
                                 "usage: ipcalc\n",
                                 nullptr};
  for (const char* output : outputs) {
    if (output != nullptr) {
      RecordTool(kIpcalc, 0, output);
    } else {
      RemoveFile(kIpcalc);
    }
    Say(output != nullptr ? output : "no program");
    char out[64] = "  kept ";
    TELL(ZARNNetCalBroadcast("10.1.1.1/8", out, sizeof out));
    Say("'" + std::string(out) + "'");
    TELL(ZARNNetCalNetwork("10.1.1.1/255.0.0.0", out, sizeof out));
    Say("'" + std::string(out) + "'");
  }
  RecordTool(kIpcalc, 0, " NETWORK=10.0.0.0\n");
  char unterminated[4] = {' ', 'a', 'b', 'c'};
  TELL(ZARNNetCalNetwork("10.1.1.1/8", unterminated, sizeof unterminated));
  EXPECT_STREQ(unterminated, "abc");
}

TEST(Ipcalc, AnswerStaysWithinTheBuffer) {
  RecordTool(kIpcalc, 0, "BROADCAST=" + std::string(5000, '1') + "\n");
  for (const int size : {1, 10, 11, 16, 64}) {
    std::string out(80, '#');
    Tell(std::to_string(size), [&] { return ZARNNetCalBroadcast("10.1.1.1/8", out.data(), size); });
    Say(out);
  }
}

}  // namespace
