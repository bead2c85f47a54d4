// VLANs as the kernel tells of them. Not every test machine's kernel has the driver: its answers to
// the VLAN request and its table are put in place here.
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <syslog.h>

#include <zarnnetsdk/virtual.h>

#include "support/kernel_answers.h"

namespace {

constexpr char kTable[] = "/proc/net/vlan/config";
constexpr char kHead[] =
    "VLAN Dev name    | VLAN ID\nName-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD\n";

TEST(Vlan, KernelIsAskedForTheWholeName) {
  test::Kernel().vlanParents = {{"eth0.10", "eth0"}, {"abcdefghijklm.4", "abcdefghijklm"}};
  KOPANETVLAN vlan;
  std::memset(&vlan, 0x5A, sizeof vlan);
  EXPECT_EQ(KOPANetVlanGet("eth0.10", &vlan), 1);
  EXPECT_STREQ(vlan.szName, "eth0.10");
  EXPECT_STREQ(vlan.szRowDev, "eth0");
  EXPECT_EQ(vlan.id, 10);
  EXPECT_EQ(KOPANetVlanGet("eth1", &vlan), 0);
  EXPECT_STREQ(vlan.szName, "eth1");
  EXPECT_STREQ(vlan.szRowDev, "") << "nothing is left of the last answer";
  EXPECT_EQ(vlan.id, 0);
  EXPECT_EQ(KOPANetVlanGetByRowDev("abcdefghijklm", 4, &vlan), 1);
  EXPECT_EQ(KOPANetVlanGetByRowDev("abcdefghijklm", 4094, &vlan), 0)
      << "cut short it would be VLAN 4";
}

TEST(Vlan, BadArgumentsAndNoSocketAreTold) {
  KOPANETVLAN vlan{};
  for (const unsigned id : {0U, 4095U, 65537U, ~0U})
    test::Refused(0x0D00, [&] { return KOPANetVlanGetByRowDev("eth0", id, &vlan); });
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_EQ(KOPANetVlanGet("eth0.10", &vlan), -1);
  EXPECT_EQ(KOPACErrGet(), 0x3400);
  ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST(Vlan, TableIsReadBehindItsHead) {
  KOPANETVLAN junk;
  KOPANETVLAN* vlans = &junk;
  int count = 7;
  test::MountEmpty("/proc/self/net");
  EXPECT_EQ(KOPANetVlanExist(), 0);
  EXPECT_EQ(KOPANetVlanEnum(&vlans, &count), 0) << "no driver";
  EXPECT_EQ(vlans, nullptr);
  EXPECT_EQ(count, 0);
  test::WriteFile(kTable, kHead);
  EXPECT_EQ(KOPANetVlanExist(), 1);
  EXPECT_EQ(KOPANetVlanEnum(&vlans, &count), 0);
  EXPECT_EQ(vlans, nullptr) << "no VLANs, no array";
  test::WriteFile(kTable, std::string(kHead) +
                              "eth0.10        | 10  | eth0\nabcdefghijk.409| 409  | abcdefghijk\n"
                              "vlan7\t| 7  | ovs_eth3");
  ASSERT_EQ(KOPANetVlanEnum(&vlans, &count), 0);
  ASSERT_EQ(count, 3);
  const KOPANETVLAN wanted[] = {
      {"eth0.10", "eth0", 10}, {"abcdefghijk.409", "abcdefghijk", 409}, {"vlan7", "ovs_eth3", 7}};
  EXPECT_EQ(std::memcmp(vlans, wanted, sizeof wanted), 0);
  std::free(vlans);
}

TEST(Vlan, UnexpectedLineGivesNothing) {
  test::MountEmpty("/proc/self/net");
  for (const char* line :
       {"eth1.5 10 eth1", "eth1.5 | x | eth1", "eth1.5 | 5", "abcdefghijklmnopqrs | 5  | eth1"}) {
    KOPANETVLAN* vlans = nullptr;
    int count = 7;
    test::WriteFile(kTable, std::string(kHead) + "eth0.10        | 10  | eth0\n" + line + "\n");
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(KOPANetVlanEnum(&vlans, &count), -1) << line;
    EXPECT_EQ(vlans, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(KOPACErrGet(), 0x4000);
    const std::string message = "Get wrong format from /proc/net/vlan/config: " + std::string(line);
    test::ExpectLog(LOG_ERR, "net_vlan_enum", message);
  }
}

}  // namespace
