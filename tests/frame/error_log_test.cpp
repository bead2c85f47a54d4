// SPDX-License-Identifier: Apache-2.0
// What a failure leaves: code, place and line; and that no exception crosses the C interface.
#include <new>
#include <stdexcept>
#include <sys/resource.h>

#include <zarnnetsdk/zarnnetsdk.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "support/appliance.h"

using namespace test;

namespace {

int Throws(bool memory) {
  return frame::Boundary(-7, [&]() -> int {
    if (memory) throw std::bad_alloc();
    throw std::runtime_error("anything");
  });
}

}  // namespace

TEST(ErrorState, AnExceptionBecomesMemoryExhausted) {
  for (const bool memory : {true, false}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-7, Throws(memory));
    EXPECT_EQ(ZARNNETERR_NO_MEMORY, KOPACErrGet());
  }
}

TEST(Log, LinesBeginWithTheirPlace) {
  const int first = __LINE__ + 1;
  LOG_ERROR("%s:%d one %d", 1);
  LOG_WARN("%s:%d two");
  LOG_ERROR_FUNC(frame::Place(), "%s(%d) three");
  LOG_ERROR_PLAIN("four %s", "4");
  EXPECT_EQ(-1, frame::InvalidArgument("NULL != x", -1));
  const std::string at = "error_log_test:";
  EXPECT_EQ("3 " + at + std::to_string(first) + " one 1\n4 " + at + std::to_string(first + 1) +
                " two\n3 TestBody(" + std::to_string(first + 2) + ") three\n3 four 4\n3 " + at +
                std::to_string(first + 4) + " Invaild Argument (NULL != x)=[0]\n\n",
            LogText());
  EXPECT_EQ(ZARNNETERR_BAD_PARAMETER, KOPACErrGet());
  EXPECT_STREQ("error_log_test", KOPACErrorGetFile());
  EXPECT_EQ(first + 4, KOPACErrorGetLine());
}

TEST(Descriptors, ThousandsOfFailingCallsLeaveNoneOpen) {
  const rlimit limit{64, 64};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
  char buffer[32];
  std::vector<KOPANetIfInfo> list(32);
  ZARNNETIFADDR info{};
  for (int i = 0; i < 300; ++i) {
    ZARNILnxGetIP("nosuch0", buffer, sizeof buffer);
    ZARNNetIfIsLink("nosuch0");
    KOPANetGetInterfaceInfo(list.data(), 32, 8);
    ZARNNetIFGetIPConfig("nosuch0", &info);
    ZARNNetIFBlockSet("nosuch0", 1, 1);
    ZARNNetIPChangePreHook(0, "nosuch0", "", "10.0.0.1", 24);
  }
  EXPECT_EQ(0, ZARNILnxGetIP("eth0", buffer, sizeof buffer));
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  EXPECT_EQ(0, ZARNNetIFBlockSet("eth0", 1, 1));
}
