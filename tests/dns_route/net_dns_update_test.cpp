// SPDX-License-Identifier: Apache-2.0
// Name servers: whole files, what is announced and reloaded, what a failing step leaves.
#include <zarnnetsdk/dns_route.h>

#include "support/children.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kResolv[] = "/etc/resolv.conf";
const char kStatic[] = "/etc/resolv.conf.static";
const char kInfo[] = "/etc/zarninfo.conf";
const char kV4[] = "/etc/iproute2/config/resolv4.conf";
const char kV6[] = "/etc/iproute2/config/resolv6.conf";
const char kOld[] = "nameserver\t6.6.6.6\n";
const char kOldStatic[] = "nameserver\t5.5.5.5\n";

struct Dns : testing::Test {
  Dns() {
    RecordTool("/sbin/initctl");
    Prepare();
  }
  static void Prepare() {
    WriteFile(kInfo, "dns_mode=\"auto\"\n");
    WriteFile(kResolv, kOld, 0600);
    WriteFile(kStatic, kOldStatic);
  }
  static void SetList(const Lines& servers) {
    std::string all;
    for (const std::string& server : servers)
      all += " " + server;
    Tell("set" + all, [&] { return ZARNNetDNSListSet(List(servers)); });
  }
};

}  // namespace

TEST_F(Dns, AFixedListIsStoredUsedAnnouncedAndReadBack) {
  RecordTool("/sbin/initctl", 0, "zarnrelayd start/running, process 7\n");
  WriteFile("/etc/resolv.conf.option", "search a b\ndomain\texample.org\ndomain\tother.org\n");
  SetList({"9.9.9.9", "2001:db8::53"});
  List fixed({"kept"});
  List used;
  EXPECT_EQ(0, ZARNNetStaticDNSListGet(fixed.Out()));
  EXPECT_EQ((Lines{"kept", "9.9.9.9", "2001:db8::53"}), fixed.Texts());
  EXPECT_EQ(0, ZARNNetDNSListGet(used.Out()));
  EXPECT_EQ((Lines{"9.9.9.9", "2001:db8::53"}), used.Texts());
  TELL(ZARNNetDNSSet("1.1.1.1"));
}

TEST_F(Dns, LearnedServersAreUsedLineForLine) {
  WriteFile(kV4, "# lease\nnameserver\t1.1.1.1\r\n  nameserver 2.2.2.2 x\nnameserver\n");
  WriteFile(kV6, "\nnameserver\t2001:db8::6");
  TELL(ZARNNetDNSUpdate());
  char first[8] = "stale";
  WriteFile(kResolv, "nameserver\n# nameserver 8.8.8.8\nnameserver \t 10.20.30.40\nnameserver ::1");
  TELL(ZARNNetDNSGet(first, sizeof first));
  Say(first);
  RemoveFile(kResolv);
  TELL(ZARNNetDNSGet(first, sizeof first));
  Say(first);
}

TEST_F(Dns, WithoutServersTheResolverStaysAsItIs) {
  TELL(ZARNNetDNSModeSet("auto"));
  RemoveFile(kStatic);
  TELL(ZARNNetDNSModeSet("static"));
}

TEST_F(Dns, WhatIsNoServerIsRefusedBeforeAnythingIsTouched) {
  for (const Lines& list :
       {Lines{}, {""}, {"1.2.3"}, {"9.9.9.9", "1.1.1.1\nsearch evil"}, {"nas.local"}})
    SetList(list);
  TELL(ZARNNetDNSSet("fe80::1%eth0"));
  TELL(ZARNNetDNSModeSet("Static"));
  const List evil({"domain\tx\nnameserver 6.6.6.7"});
  TELL(ZARNNetDNSFileSet(List({"9.9.9.9"}), evil));
}

TEST_F(Dns, AFailedStepLeavesTheOldFilesAndStopsTheAnnouncement) {
  RemoveFile(kStatic);
  WriteFile(std::string(kStatic) + "/file", "");
  SetList({"9.9.9.9"});
  WriteFile(std::string(kV4) + "/file", "");
  TELL(ZARNNetDNSUpdate());
  RemoveFile(kV4);
  RemoveFile(kResolv);
  WriteFile(std::string(kResolv) + "/file", "");
  WriteFile(kV6, "nameserver\t::6\n");
  TELL(ZARNNetDNSUpdate());
}

TEST_F(Dns, WhatCannotBeReadIsNotTakenForAbsent) {
  WriteFile(kV4, "nameserver\t1.1.1.1\n");
  WriteFile("/etc/resolv.conf.option/file", "");
  TELL(ZARNNetDNSUpdate());
  RemoveFile("/etc/resolv.conf.option");
  RemoveFile(kInfo);
  WriteFile(std::string(kInfo) + "/file", "");
  TELL(ZARNNetDNSUpdate());
}

TEST_F(Dns, OfRivalsTheLastListIsTheOneThatIsUsed) {
  RemoveFile("/usr/zarn/plugins/net");
  const Lines lists[] = {{"9.9.9.9", "8.8.8.8", "::8"}, {"1.1.1.1"}};
  const auto rebuild = [&](int which) {
    return Start([&lists, which] {
      int failures = 0;
      for (int i = 0; i < 200; ++i)
        failures += ZARNNetDNSListSet(List(lists[which])) != 0 ? 1 : 0;
      return failures;
    });
  };
  for (const pid_t writer : {rebuild(0), rebuild(1)})
    EXPECT_EQ(0, ExitStatusOf(writer));
  EXPECT_EQ(ReadFile(kStatic), ReadFile(kResolv));
}
