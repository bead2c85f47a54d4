// Name servers: whole files, what is announced and reloaded, what a failing step leaves.
#include <algorithm>
#include <gtest/gtest.h>
#include <syslog.h>
#include <thread>

#include <zarnnetsdk/dns_route.h>

#include "support/appliance.h"
#include "support/children.h"

using namespace test;

namespace {

const char kResolv[] = "/etc/resolv.conf";
const char kStatic[] = "/etc/resolv.conf.static";
const char kInfo[] = "/etc/zarninfo.conf";
const char kV4[] = "/etc/iproute2/config/resolv4.conf";
const char kV6[] = "/etc/iproute2/config/resolv6.conf";
const char kOld[] = "nameserver\t6.6.6.6\n";
const char kOldStatic[] = "nameserver\t5.5.5.5\n";

Lines ResolverFiles() {
  Lines found;
  for (const std::string& name : FolderEntries("/etc")) {
    if (name.find("resolv.conf") != std::string::npos) found.push_back(name);
  }
  return found;
}

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
  // The code, and the resolver and the mode as they were.
  static void Failed(int code, int result) {
    EXPECT_EQ(-1, result);
    EXPECT_EQ(code, KOPACErrGet());
    EXPECT_EQ(kOld, ReadFile(kResolv));
    EXPECT_EQ("dns_mode=\"auto\"\n", ReadFile(kInfo));
    EXPECT_EQ((Lines{"resolv.conf", "resolv.conf.static"}), ResolverFiles());
    EXPECT_EQ(Lines{}, RecordedCalls());
  }
};

}  // namespace

TEST_F(Dns, AFixedListIsStoredUsedAnnouncedAndReadBack) {
  RecordTool("/sbin/initctl", 0, "zarnrelayd start/running, process 7\n");
  WriteFile("/etc/resolv.conf.option", "search a b\ndomain\texample.org\ndomain\tother.org\n");
  ASSERT_EQ(0, ZARNNetDNSListSet(List({"9.9.9.9", "2001:db8::53"}))) << LogText();
  const std::string servers = "nameserver\t9.9.9.9\nnameserver\t2001:db8::53\n";
  EXPECT_EQ(servers, ReadFile(kStatic));
  EXPECT_EQ(servers + "domain\texample.org\n", ReadFile(kResolv));
  EXPECT_EQ("dns_mode=\"static\"\n", ReadFile(kInfo));
  EXPECT_EQ(0644, FileMode(kResolv));
  EXPECT_EQ(0644, FileMode(kStatic));
  const std::string items = "DNS_1=9.9.9.9 DNS_2=2001:db8::53 ";
  EXPECT_EQ((Lines{"net/dns_config_change pre " + items + "INTERFACE= NITEMS=2",
                   "net/dns_change pre " + items + "NITEMS=2",
                   "net/dns_change post " + items + "NITEMS=2",
                   "net/dns_config_change post " + items + "INTERFACE= NITEMS=2"}),
            Events());
  EXPECT_EQ((Lines{"/sbin/initctl reload ddns", "/sbin/initctl status zarnrelayd",
                   "/sbin/initctl reload zarnrelayd"}),
            RecordedCalls());
  List fixed({"kept"});
  List used;
  EXPECT_EQ(0, ZARNNetStaticDNSListGet(fixed.Out()));
  EXPECT_EQ((Lines{"kept", "9.9.9.9", "2001:db8::53"}), Items(fixed));
  EXPECT_EQ(0, ZARNNetDNSListGet(used.Out()));
  EXPECT_EQ((Lines{"9.9.9.9", "2001:db8::53"}), Items(used));
  EXPECT_EQ(0, ZARNNetDNSSet("1.1.1.1"));
  EXPECT_EQ("nameserver\t1.1.1.1\n", ReadFile(kStatic));
  const LockHolder free(0x106);
}

TEST_F(Dns, LearnedServersAreUsedLineForLine) {
  WriteFile(kV4, "# lease\nnameserver\t1.1.1.1\r\n  nameserver 2.2.2.2 x\nnameserver\n");
  WriteFile(kV6, "\nnameserver\t2001:db8::6");
  ASSERT_EQ(0, ZARNNetDNSUpdate()) << LogText();
  EXPECT_EQ(
      "nameserver\t\nnameserver\t1.1.1.1\nnameserver\t2.2.2.2\nnameserver\t2.2.2.2\n"
      "nameserver\t2.2.2.2\nnameserver\t2001:db8::6\n",
      ReadFile(kResolv));
  EXPECT_EQ((Lines{"/sbin/initctl reload ddns", "/sbin/initctl status zarnrelayd"}),
            RecordedCalls());
  char first[8] = "stale";
  WriteFile(kResolv, "nameserver\n# nameserver 8.8.8.8\nnameserver \t 10.20.30.40\nnameserver ::1");
  EXPECT_EQ(0, ZARNNetDNSGet(first, sizeof first));
  EXPECT_STREQ("10.20.3", first);
  RemoveFile(kResolv);
  EXPECT_EQ(0, ZARNNetDNSGet(first, sizeof first));
  EXPECT_STREQ("", first);
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_dns_list_get",
                        "Failed to open /etc/resolv.conf. (No such file or directory)"));
}

TEST_F(Dns, WithoutServersTheResolverStaysAsItIs) {
  EXPECT_EQ(0, ZARNNetDNSModeSet("auto"));
  EXPECT_EQ(kOld, ReadFile(kResolv));
  RemoveFile(kStatic);
  EXPECT_EQ(0, ZARNNetDNSModeSet("static"));
  EXPECT_EQ(kOld, ReadFile(kResolv));
  EXPECT_EQ(Lines{}, Events());
  EXPECT_EQ(Lines{}, RecordedCalls());
}

TEST_F(Dns, WhatIsNoServerIsRefusedBeforeAnythingIsTouched) {
  const Lines lists[] = {{}, {""}, {"1.2.3"}, {"9.9.9.9", "1.1.1.1\nsearch evil"}, {"nas.local"}};
  for (const Lines& list : lists) {
    KOPACErrSetEx(0, "", 0);
    Failed(0x0D00, ZARNNetDNSListSet(List(list)));
  }
  KOPACErrSetEx(0, "", 0);
  Failed(0x0D00, ZARNNetDNSSet("fe80::1%eth0"));
  KOPACErrSetEx(0, "", 0);
  Failed(0x0D00, ZARNNetDNSModeSet("Static"));
  KOPACErrSetEx(0, "", 0);
  Failed(0x0D00, ZARNNetDNSModeSet(nullptr));
  EXPECT_EQ(
      1, LogCount(LOG_ERR, "net_dns_mode_set", "Invaild Argument (((void *)0) != szMode)=[0]\n"));
  KOPACErrSetEx(0, "", 0);
  Failed(0x0D00, ZARNNetDNSFileSet(List({"9.9.9.9"}), List({"domain\tx\nnameserver 6.6.6.7"})));
  EXPECT_EQ(-1, ZARNNetDNSListSet(nullptr));
  EXPECT_EQ(-1, ZARNNetStaticDNSListGet(nullptr));
  EXPECT_EQ(-1, ZARNNetDNSGet(nullptr, 8));
  EXPECT_EQ(kOldStatic, ReadFile(kStatic));
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(Dns, AFailedStepLeavesTheOldFilesAndStopsTheAnnouncement) {
  RemoveFile(kStatic);
  WriteFile(std::string(kStatic) + "/file", "");
  Failed(0x2800, ZARNNetDNSListSet(List({"9.9.9.9"})));
  EXPECT_EQ((Lines{"net/dns_config_change pre DNS_1=9.9.9.9 INTERFACE= NITEMS=1"}), Events());
  WriteFile(std::string(kV4) + "/file", "");
  Failed(0x0A00, ZARNNetDNSUpdate());
  RemoveFile(kV4);
  RemoveFile(kResolv);
  WriteFile(std::string(kResolv) + "/file", "");
  WriteFile(kV6, "nameserver\t::6\n");
  EXPECT_EQ(-1, ZARNNetDNSUpdate());
  EXPECT_EQ(0x2800, KOPACErrGet());
  ASSERT_EQ(2U, Events().size());
  EXPECT_EQ("net/dns_change pre DNS_1=::6 NITEMS=1", Events()[1]);
  EXPECT_EQ((Lines{"resolv.conf", "resolv.conf.static"}), ResolverFiles());
  EXPECT_EQ(Lines{}, RecordedCalls());
}

TEST_F(Dns, AFullOrReadOnlyDiskLeavesTheOldFiles) {
  MountEmpty("/etc", "24k");
  Prepare();
  WriteFile("/etc/zarn-appliance", "");
  FillDisk("/etc");
  RemoveFile("/etc/zarn-appliance");
  Lines many;
  for (int i = 0; i < 600; ++i)
    many.push_back("2001:db8::" + std::to_string(i));
  Failed(0x0B00, ZARNNetDNSListSet(List(many)));
  EXPECT_EQ(kOldStatic, ReadFile(kStatic));
  EXPECT_EQ(1U, Events().size());
  Failed(0x0B00, ZARNNetDNSFileSet(List(many), nullptr));
  EXPECT_EQ(1U, Events().size());
  Shell("mount -o remount,ro /etc");
  Failed(0x0900, ZARNNetDNSListSet(List({"9.9.9.9"})));
  Failed(0x0900, ZARNNetDNSFileSet(List({"9.9.9.9"}), nullptr));
}

TEST_F(Dns, ALockThatIsHeldTooLongLeavesTheOldFile) {
  WriteFile(kV4, "nameserver\t1.1.1.1\n");
  const LockHolder other(0x106);
  char first[16] = "stale";
  int code = 0;
  std::thread reader([&] {
    EXPECT_EQ(-1, ZARNNetDNSGet(first, sizeof first));
    code = KOPACErrGet();
  });
  Failed(0x0400, ZARNNetDNSUpdate());
  reader.join();
  EXPECT_EQ(0x0400, code);
  EXPECT_STREQ("stale", first);
  EXPECT_NE(std::string::npos, LogText().find("KOPACFileLock failed.[0x")) << LogText();
}

TEST_F(Dns, ReadersAndRivalsSeeWholeListsOnly) {
  WriteFile("/sbin/initctl", "#!/bin/true\n", 0755);
  RemoveFile("/usr/zarn/plugins/net");
  const std::string texts[] = {"nameserver\t9.9.9.9\nnameserver\t8.8.8.8\nnameserver\t::8\n",
                               "nameserver\t1.1.1.1\n"};
  const Lines lists[] = {{"9.9.9.9", "8.8.8.8", "::8"}, {"1.1.1.1"}};
  WriteFile(kResolv, texts[0]);
  WriteFile(kStatic, texts[1]);
  const auto rebuild = [&](int which) {
    for (int i = 0; i < 1000; ++i) {
      if (ZARNNetDNSListSet(List(lists[which])) != 0) return 1;
    }
    return 0;
  };
  pid_t writers[] = {Start([&] { return rebuild(0); }), Start([&] { return rebuild(1); })};
  int seen[2] = {};
  for (int ended = 0; ended < 2;) {
    for (const char* path : {kResolv, kStatic}) {
      const std::string text = ReadFile(path);
      const auto found = std::find(std::begin(texts), std::end(texts), text);
      if (found == std::end(texts)) {
        ADD_FAILURE() << path << " is partial: " << text;
      } else {
        ++seen[found - std::begin(texts)];
      }
    }
    for (pid_t& writer : writers) {
      int status = 0;
      if (writer == 0 || ::waitpid(writer, &status, WNOHANG) == 0) continue;
      EXPECT_EQ(0, status);
      writer = 0;
      ++ended;
    }
  }
  EXPECT_LT(10, seen[0]);
  EXPECT_LT(10, seen[1]);
  EXPECT_EQ(ReadFile(kStatic), ReadFile(kResolv)) << "the last list is the one that is used";
  EXPECT_EQ((Lines{"resolv.conf", "resolv.conf.static"}), ResolverFiles());
}
