// SPDX-License-Identifier: Apache-2.0
// IPv6 addresses and the kernel's switch, on real interfaces where the kernel can do the thing.
#include <zarnnetsdk/error.h>
#include <zarnnetsdk/ipv6.h>

#include "support/transcript.h"

using namespace test;

namespace {

std::string IfInet6Line(const std::string& hex, const std::string& fields) {
  return hex + " 02 " + fields + "\n";
}

}  // namespace

TEST(V6Addresses, AreTheKernels) {
  Shell("ip link set eth0 up; ip -6 address add fd00::10/64 dev eth0 nodad; ip link set eth1 up");
  ZARNNETV6ADDR list[4];
  const int count = ZARNLnxV6IPGet("eth0", list, 4);
  ASSERT_LE(1, count);
  bool found = false;
  for (int i = 0; i < count; ++i) {
    if (std::string("fd00::10") != list[i].szAddr) continue;
    found = true;
    EXPECT_EQ(64U, list[i].prefix);
    EXPECT_EQ(0U, list[i].scope);
  }
  EXPECT_TRUE(found);
  EXPECT_EQ(0, ZARNLnxV6IPGet("nosuch0", list, 4));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNLnxV6IPGet("eth0", list, 0));
}

TEST(V6Addresses, TheTableIsReadLineByLineWhateverItHolds) {
  MountEmpty("/proc/self/net");
  std::string table = "garbage\n\n";
  for (int i = 0; i < 20; ++i) {
    table +=
        IfInet6Line("20010db80000000000000000000000" + std::to_string(10 + i), "40 00 80     eth0");
  }
  table += IfInet6Line("fe800000000000000000000000000001", "0a 20 c0     eth01");
  table += "fe800000000000000000000000000002 02 40 20 80     eth1";
  WriteFile("/proc/net/if_inet6", table);
  ZARNNETV6ADDR list[16];
  EXPECT_EQ(20, ZARNLnxV6IPGet("eth0", list, 16)) << "more than fit are counted";
  EXPECT_STREQ("2001:db8::10", list[0].szAddr);
  EXPECT_STREQ("2001:db8::25", list[15].szAddr);
  EXPECT_EQ(0x40U, list[0].prefix);
  EXPECT_EQ(0x80U, list[0].flags);
  EXPECT_EQ(1, ZARNLnxV6IPGet("eth1", list, 16)) << "the last line without newline";
  EXPECT_EQ(0x20U, list[0].scope);
  EXPECT_STREQ("", list[1].szAddr) << "unused records are cleared";
  RemoveFile("/proc/net/if_inet6");
  EXPECT_EQ(-1, ZARNLnxV6IPGet("eth0", list, 16));
  EXPECT_EQ(ZARNNETERR_OPEN, KOPACErrGet());
  ExpectLog(LOG_ERR, "net_lnx_get_v6ip",
            "Fail to open [/proc/net/if_inet6], errno=[2/No such file or directory]");
}

TEST(V6Switch, TurnsOffAndOn) {
  BringUp("eth0");
  Mask("(  slept [0-9]+ ms)", "");
  TELL(ZARNLnxIPv6ProcAction("eth0", 1));
  TELL(ZARNLnxIPv6ProcAction("eth0", 7));
  TELL(ZARNLnxIPv6ProcAction("eth1", 1));
}

TEST(V6Switch, WaitsForTheTentativeLinkLocalAddressAndGivesUp) {
  BringUp("eth0");
  const std::string dev = ReadFile("/proc/net/dev");
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/dev", dev);
  WriteFile("/proc/net/if_inet6",
            IfInet6Line("fe800000000000000000000000000001", "40 20 c0     eth0"));
  TELL(ZARNLnxIPv6ProcAction("eth0", 0));
  WriteFile("/proc/net/if_inet6",
            IfInet6Line("20010db8000000000000000000000001", "40 00 c0     eth0"));
  Say("only link-local addresses are waited for");
  TELL(ZARNLnxIPv6ProcAction("eth0", 0));
}

TEST(V6Flush, LeavesIpv6AsTheFileWantsIt) {
  BringUp("eth0");
  Mask("(  slept [0-9]+ ms)", "");
  Shell("ip -6 address add fd00::10/64 dev eth0");
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  TELL(ZARNLnxIPv6FlushAddr("eth0"));
  WriteIfcfg("eth0", "IPV6INIT=OFF\n");
  TELL(ZARNLnxIPv6FlushAddr("eth0"));
  RemoveFile(IfcfgPath("eth0"));
  TELL(ZARNLnxIPv6FlushAddr("eth0"));
}

TEST(V6Subnet, ComparesBitByBit) {
  const struct {
    const char* fault;
    const char* a;
    const char* b;
    unsigned prefix;
    int same;
  } cases[] = {
      {"prefix 0 compares something", "::1", "ffff::", 0, 1},
      {"the last bit is left out", "fd00::1", "fd00::2", 128, 0},
      {"whole bytes only", "fd00:0:0:1:8000::", "fd00:0:0:1::", 65, 0},
      {"one bit too many", "fd00:0:0:1:4000::", "fd00:0:0:1::", 65, 1},
      {"a byte boundary reads one byte too many", "fd00::ff", "fd00::1", 120, 1},
      {"prefix 129 is taken", "::1", "::1", 129, -1},
      {"text is taken", "::1", "::g", 64, -1},
      {"an IPv4 address is taken", "10.0.0.1", "::1", 64, -1},
      {"null is read", nullptr, "::1", 64, -1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.same, ZARNNetIPv6IsSameSubnet(c.a, c.b, c.prefix)) << c.fault;
  ExpectLog(LOG_ERR, "net_ipv6_is_same_subnet", "Bad parameter.", 2);
  ExpectLog(LOG_ERR, "net_ipv6_is_same_subnet", "Invalid network address: 10.0.0.1");
}
