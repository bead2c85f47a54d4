// Duplicate address detection against a second host that has the address, and the off/on flush.
#include "machine.h"

using namespace test;

namespace {

std::string Addresses(const std::string& filter = "") {
  return Shell("ip -6 address show dev eth0 " + filter);
}

}  // namespace

TEST(Ipv6, AnAddressThatAnotherHostHasIsTakenAway) {
  SleepForReal();
  BringUp("eth0");
  Do("ip -n lan -6 address add 2001:db8::5/64 dev lan nodad");
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", ZARNNET_IPV6_STATIC, "2001:db8::5", 64, "")) << LogText();
  EXPECT_FALSE(Contains(Addresses(), "2001:db8::5")) << Addresses();
  EXPECT_TRUE(Contains(LogText(), "ipv6 dad fail")) << LogText();

  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", ZARNNET_IPV6_STATIC, "2001:db8::6", 64, "")) << LogText();
  ASSERT_TRUE(Within(10, [] { return !Contains(Addresses("tentative"), "2001:db8::6"); }));
  EXPECT_TRUE(Contains(Addresses("scope global"), "2001:db8::6/64")) << Addresses();
  EXPECT_TRUE(SecondHostReaches("2001:db8::6"));
}

TEST(Ipv6, AFlushTakesEveryAddressAndLeavesALinkLocalOne) {
  SleepForReal();
  BringUp("eth0");
  WriteIfcfg("eth0", "DEVICE=eth0\nIPV6INIT=auto\n");
  Do("ip -6 address add fd00:1::1/64 dev eth0; ip -6 address add fd00:2::2/48 dev eth0 nodad");
  ASSERT_EQ(0, ZARNLnxIPv6FlushAddr("eth0")) << LogText();
  EXPECT_EQ("", Addresses("scope global"));
  EXPECT_TRUE(Within(5, [] { return Contains(Addresses("-tentative"), "inet6 fe80::"); }))
      << Addresses();

  WriteIfcfg("eth0", "DEVICE=eth0\nIPV6INIT=off\n");
  ASSERT_EQ(0, ZARNLnxIPv6FlushAddr("eth0")) << LogText();
  EXPECT_EQ("", Addresses());
  EXPECT_EQ("1\n", ReadFile("/proc/sys/net/ipv6/conf/eth0/disable_ipv6"));
}
