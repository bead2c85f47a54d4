// SPDX-License-Identifier: Apache-2.0
// Starts a test program, but only inside the reference appliance: the cases write to /etc and to
// the kernel.
#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/appliance.h"

namespace {

class LogOfFailures : public ::testing::EmptyTestEventListener {
  void OnTestEnd(const ::testing::TestInfo& test) override {
    if (test.result()->Failed()) std::printf("log:\n%s", test::LogText().c_str());
  }
};

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (::access("/etc/zarn-appliance", F_OK) != 0) {
    std::fputs("This program runs in the reference appliance alone: appliance/run -- PROGRAM\n",
               stderr);
    return 2;
  }
  ::testing::UnitTest::GetInstance()->listeners().Append(new LogOfFailures);
  return RUN_ALL_TESTS();
}
