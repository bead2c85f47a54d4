// What ipcalc is asked, and what is made of its answers.
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <syslog.h>

#include <zarnnetsdk/addr.h>

#include "support/appliance.h"

namespace {

constexpr char kIpcalc[] = "/bin/ipcalc";

int FailureLines() {
  return test::LogCount(LOG_ERR, "net_cal_broadcast",
                        "excute cmd /bin/ipcalc -b 10.1.1.1/8 failed");
}

TEST(Ipcalc, IsAskedForOneAddress) {
  test::RecordTool(kIpcalc, 0, "BROADCAST=10.255.255.255\nNETWORK=10.0.0.0\n");
  char out[64] = "";
  EXPECT_EQ(ZARNNetCalBroadcast("10.1.1.1/8", out, sizeof out), 0);
  EXPECT_STREQ(out, "10.255.255.255");
  test::RecordTool(kIpcalc, 0, "NETWORK=10.0.0.0\n");
  EXPECT_EQ(ZARNNetCalNetwork("10.1.1.1/255.0.0.0", out, sizeof out), 0);
  EXPECT_STREQ(out, "10.0.0.0");
  EXPECT_EQ(test::RecordedCalls(),
            (test::Lines{"/bin/ipcalc -b 10.1.1.1/8", "/bin/ipcalc -n 10.1.1.1/255.0.0.0"}));
}

TEST(Ipcalc, LineIsTrimmedForTheBroadcastAndTheBufferForTheNetwork) {
  char out[64] = "";
  test::RecordTool(kIpcalc, 0, " \tBROADCAST=10.255.255.255 \n");
  EXPECT_EQ(ZARNNetCalBroadcast("10.1.1.1/8", out, sizeof out), 0);
  EXPECT_STREQ(out, "10.255.255.255");
  test::RecordTool(kIpcalc, 0, " NETWORK=10.0.0.0\n");
  std::strcpy(out, "  before ");
  EXPECT_EQ(ZARNNetCalNetwork("10.1.1.1/8", out, sizeof out), -1);
  EXPECT_STREQ(out, "before");
  EXPECT_EQ(FailureLines(), 1);
  char unterminated[4] = {' ', 'a', 'b', 'c'};
  EXPECT_EQ(ZARNNetCalNetwork("10.1.1.1/8", unterminated, sizeof unterminated), -1);
  EXPECT_STREQ(unterminated, "abc");
}

TEST(Ipcalc, NoUsableAnswerIsLogged) {
  char out[64] = "kept";
  test::RemoveFile(kIpcalc);
  EXPECT_EQ(ZARNNetCalBroadcast("10.1.1.1/8", out, sizeof out), -1);
  EXPECT_EQ(ZARNNetCalNetwork("10.1.1.1/8", out, sizeof out), -1);
  for (const char* output : {"", "\n", "BROADCAST=\n", "NETWORK\n", "usage: ipcalc\n"}) {
    test::RecordTool(kIpcalc, 1, output);
    EXPECT_EQ(ZARNNetCalBroadcast("10.1.1.1/8", out, sizeof out), -1) << output;
    EXPECT_EQ(ZARNNetCalNetwork("10.1.1.1/8", out, sizeof out), -1) << output;
  }
  EXPECT_EQ(FailureLines(), 12);
  EXPECT_STREQ(out, "kept");
}

TEST(Ipcalc, AnswerStaysWithinTheBuffer) {
  test::RecordTool(kIpcalc, 0, "BROADCAST=" + std::string(5000, '1') + "\n");
  for (const int size : {1, 10, 11, 16, 64}) {
    std::string out(80, '#');
    const int result = ZARNNetCalBroadcast("10.1.1.1/8", out.data(), size);
    EXPECT_EQ(out.substr(static_cast<std::size_t>(size)),
              std::string(80 - static_cast<std::size_t>(size), '#'))
        << size;
    EXPECT_EQ(result, size > 11 ? 0 : -1) << size;
    if (result == 0) {
      EXPECT_EQ(std::string(out.c_str()), std::string(static_cast<std::size_t>(size) - 11, '1'));
    }
  }
}

}  // namespace
