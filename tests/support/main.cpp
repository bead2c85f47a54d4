// Starts a test program, but only inside the reference appliance: the cases write to /etc and to
// the kernel.
#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (::access("/etc/zarn-appliance", F_OK) != 0) {
    std::fputs("This program runs in the reference appliance alone: appliance/run -- PROGRAM\n",
               stderr);
    return 2;
  }
  return RUN_ALL_TESTS();
}
