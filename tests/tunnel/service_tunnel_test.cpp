// SPDX-License-Identifier: Apache-2.0
// The tunnel: what is stored and who can read it, and the client as a real process.
#include <cerrno>
#include <csignal>
#include <ctime>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <zarnnetsdk/tunnel.h>

#include "frame/base/text.h"
#include "support/clock.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kPasswordFile[] = "/etc/gogoc/.tunnel_passwd";
const char kConf[] = "/etc/gogoc/gogoc.conf";
const char kScript[] = "/etc/gogoc/rc.tun";
const char kSecret[] = "Tr0ub4dor&3";
const char kStored[] = "# tunnel\nIPV6INIT=auto\nSERVER=b1.example\nLOGIN=login\nUSERID=bob";

ZARNTUNNELCONF Conf(bool anonymous, std::string_view server, std::string_view user = "",
                    std::string_view password = "") {
  ZARNTUNNELCONF conf{};
  conf.blAnonymous = anonymous ? 1 : 0;
  frame::CopyText(server, conf.szServer);
  frame::CopyText(user, conf.szUserId);
  frame::CopyText(password, conf.szPassword);
  return conf;
}

std::string Text(const ZARNTUNNELCONF& conf) {
  return frame::Format("%d|%s|%s|%s", conf.blAnonymous, conf.szServer, conf.szUserId,
                       conf.szPassword);
}

struct Tunnel : testing::Test {
  Tunnel() {
    WriteIfcfg("tun", kStored);
    const ZARNTUNNELCONF first = Conf(false, "b1.example", "bob", kSecret);
    EXPECT_EQ(0, ZARNTunnelConfigSet(&first));
    TellRewrites();
    Mask(R"(^    [-+](.*\\x00.*))", "CIPHER");
  }
  // The secret is in no log, in no argument and in no file that others may read.
  ~Tunnel() override {
    EXPECT_EQ(std::string::npos, (LogText() + ChildLog()).find(kSecret));
    EXPECT_EQ("", Shell(std::string("find /etc /run /tmp /var -xdev -type f -exec grep -slF '") +
                        kSecret + "' {} +"));
  }
  static void Broker(const std::string& word) { WriteFile("/etc/gogoc/broker", word + "\n"); }
};

void Read() {
  ZARNTUNNELCONF conf{};
  TELL(ZARNTunnelConfigGet(&conf));
  Say(Text(conf));
}

void Set(const std::string& why, const ZARNTUNNELCONF& conf) {
  Tell(why, [&] { return ZARNTunnelConfigSet(&conf); });
}

}  // namespace

TEST_F(Tunnel, SettingsAreStoredReadBackAndWrittenOnlyWhereTheyDiffer) {
  EXPECT_EQ(64U, ReadFile(kPasswordFile).size());
  EXPECT_EQ(0600, FileMode(kPasswordFile));
  EXPECT_EQ(kStored, ReadIfcfg("tun"));
  Read();
  Set("another password", Conf(false, "", "bob", "other"));
  Read();
  Set("another server and user", Conf(false, "b2", "eve", "other"));
  Set("anonymous", Conf(true, "b2"));
  WriteFile("/etc/zarnservice/zarntunnel.conf", "run=\"yes\"\n");
  Read();
  Set("a login without a password must not come by the one of an earlier login", Conf(false, "b2"));
  Read();
}

TEST_F(Tunnel, PasswordsThatCannotBeHadReadAsEmpty) {
  Set("the longest", Conf(false, "b", "bob", std::string(31, 'p')));
  Read();
  for (const std::string& text : {std::string(32, 'c'), std::string()}) {
    WriteFile(kPasswordFile, text, 0600);
    Read();
  }
  RemoveFile(kPasswordFile);
  Read();
  WriteFile(kPasswordFile, "garbled", 0600);
  WriteFile("/etc/zarncore/cipher.key", "damaged", 0600);
  Read();
}

TEST_F(Tunnel, WhatCannotBeStoredLeavesEverythingAsItIs) {
  Set("a server with a line", Conf(false, "b\nLOGIN=anonymous", "bob", "pw"));
  const ZARNTUNNELCONF good = Conf(false, "b", "bob", "pw");
  ZARNTUNNELCONF unended = good;
  std::fill_n(unended.szServer, sizeof unended.szServer, 's');
  Set("a server without its end", unended);
  TELL(ZARNTunnelExecute(0, &unended));
  unended = good;
  std::fill_n(unended.szPassword, sizeof unended.szPassword, 'p');
  Set("a password without its end", unended);
  WriteFile("/etc/zarnservice/zarntunnel.conf", "run=\"perhaps\"\n");
  Set("a broken switch", good);
  WriteFile("/etc/zarnservice/zarntunnel.conf", "run=\"no\"\n");
  RemoveFile(IfcfgPath("tun"));
  Set("no file", good);
  WriteIfcfg("tun", kStored);
  MountEmpty("/etc/gogoc", "4k");
  WriteFile(kPasswordFile, "kept", 0600);
  Set("a full disk", good);
}

namespace {

// The appliance's own script and client run as real processes; the settings that the script finds
// are kept, with their mode, for the owner alone.
struct TunnelRun : Tunnel {
  TunnelRun() {
    SleepUntilAChildEnds();
    WriteFile("/usr/rc.tun", ReadFile(kScript), 0755);
    WriteFile(kScript,
              "#!/bin/sh\necho \"$*\" >>/run/recorded-calls\n"
              "rm -rf /root/seen; cp -p /etc/gogoc/gogoc.conf /root/seen 2>/dev/null\n"
              "exec /usr/rc.tun \"$@\"\n",
              0755);
    Mask("(  slept [0-9]+ ms)", "");  // two processes at their own pace
    Mask("^    [-+]([0-9]+)$", "PID");
    Mask("passwd=(.*dor&3)", "SECRET");
    EXPECT_EQ(0, ::chdir("/tmp"));
  }
  static bool ClientRuns() { return KOPACIsProcAlive("/usr/bin/gogoc") == 1; }
  static void Execute(int action, const ZARNTUNNELCONF* conf) {
    Tell("action " + std::to_string(action), [&] { return ZARNTunnelExecute(action, conf); });
    Say(ClientRuns() ? "a client runs" : "no client runs");
  }
};

}  // namespace

TEST_F(TunnelRun, ATunnelComesUpWithTheStoredSettingsAndGoesDown) {
  RecordTool("/sbin/initctl", 0, "zarnrelayd start/running, process 7\n");
  WriteFile("/tmp/tsp-broker-list.txt", "list\n");
  WriteFile(kConf, "stale=1\n", 0666);
  Execute(ZARNTUNNEL_START, nullptr);
  const ZARNTUNNELCONF other = Conf(true, "b9", "ignored\n", "ignored\n");
  Say("the user id would be a line");
  Execute(ZARNTUNNEL_RESTART, &other);
  const ZARNTUNNELCONF anonymous = Conf(true, "b9", "ignored", "ignored\n");
  Execute(ZARNTUNNEL_RESTART, &anonymous);
  Broker("sticks");
  Execute(ZARNTUNNEL_STOP, &other);
  Broker("accepts");
  Execute(ZARNTUNNEL_STOP, nullptr);
}

TEST_F(TunnelRun, AClientWithoutATunnelIsLeftTryingAfterAStartAndEndedOtherwise) {
  Broker("silent");
  Execute(ZARNTUNNEL_START, nullptr);
  Execute(ZARNTUNNEL_RESTART, nullptr);
  Broker("deaf");
  Execute(ZARNTUNNEL_START, nullptr);
  Execute(ZARNTUNNEL_STOP, nullptr);
  Broker("refuses");
  Execute(ZARNTUNNEL_START, nullptr);
}

TEST_F(TunnelRun, WithoutSettingsNothingRunsAndAnUnknownActionTidiesUp) {
  WriteFile(kConf, "passwd=left\n");
  Execute(3, nullptr);
  RemoveFile(IfcfgPath("tun"));
  Execute(ZARNTUNNEL_START, nullptr);
  const ZARNTUNNELCONF conf = Conf(true, "b");
  MountEmpty("/etc/gogoc", "4k");
  WriteFile("/etc/gogoc/full", std::string(4096, 'x'));
  Execute(ZARNTUNNEL_START, &conf);
}

// ---- what processes leave behind when they are killed, waited for in vain or run at once

namespace {

bool ComesToBe(bool (*holds)()) {
  for (int look = 0; look < 500 && !holds(); ++look)
    Shell("sleep 0.02");
  return holds();
}

bool ConfIsGone() {
  return !FileExists(kConf);
}

}  // namespace

TEST(TunnelEdges, AScriptThatIsLeftRunningIsNobodysZombieAndIsTidiedUpAfter) {
  WriteFile(kScript, "#!/bin/sh\nwhile [ ! -e /run/go ]; do sleep 0.02; done\n", 0755);
  const ZARNTUNNELCONF conf = Conf(false, "b", "bob", "secret");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf)) << LogText();
  EXPECT_EQ(45000, SleptMilliseconds());
  ExpectLog(LOG_ERR, "service_tunnel_execute", "connecting to tunnel broker timeout");
  EXPECT_EQ(-1, ::waitpid(-1, nullptr, WNOHANG));
  EXPECT_EQ(ECHILD, errno);
  EXPECT_TRUE(FileExists(kConf)) << "the script may read it still";
  WriteFile("/run/go", "");
  EXPECT_TRUE(ComesToBe(ConfIsGone));
  EXPECT_EQ("", ChildLog()) << "the C library's log lock may be held for good behind a fork";
}

TEST(TunnelEdges, ThePasswordGoesWhoeverIsKilledAndWithAStopAtTheLatest) {
  const ZARNTUNNELCONF conf = Conf(false, "b", "bob", "secret");
  SleepUntilAChildEnds();
  // The script's parent is the worker, whose parent is the caller's child.
  WriteFile(kScript, "#!/bin/sh\nkill -KILL $PPID\n", 0755);
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf)) << LogText();
  EXPECT_FALSE(FileExists(kConf));
  WriteFile(kScript,
            "#!/bin/sh\nread line </proc/$PPID/stat; set -- $line; kill -KILL $4\n"
            "[ -e /etc/gogoc/gogoc.conf ] && >/run/late\n",
            0755);
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf)) << LogText();
  EXPECT_TRUE(ComesToBe(ConfIsGone));
  WriteFile(kConf, "passwd=left\n");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_STOP, nullptr)) << LogText();
  EXPECT_TRUE(ConfIsGone());
}

TEST(TunnelEdges, TheScriptHasNothingOfTheCallers) {
  SleepUntilAChildEnds();
  ASSERT_NE(SIG_ERR, ::signal(SIGTERM, SIG_IGN));
  ASSERT_GE(::dup(0), 0);
  WriteFile(kScript,
            "#!/bin/sh\nls -l /proc/$$/fd | grep -c /dev/null >/run/seen\n"
            "grep -E 'Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t' >>/run/seen\n",
            0755);
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_STOP, nullptr)) << LogText();
  // The shell's own descriptor of its script, if it has one above 9, is no inherited one.
  EXPECT_EQ("SigBlk:0000000000000000\nSigIgn:0000000000000000\n", Shell("tail -n 2 /run/seen"))
      << ReadFile("/run/seen");
  EXPECT_EQ("3\n", Shell("head -n 1 /run/seen"));
}

TEST(TunnelEdges, TwoSettersAtOnceLeaveTheUserAndThePasswordOfOne) {
  WriteIfcfg("tun", "SERVER=b\nLOGIN=login\nUSERID=first\n");
  const auto set = [](const std::string& name) {
    const ZARNTUNNELCONF tunnel = Conf(false, "b", name, name);
    EXPECT_EQ(0, ZARNTunnelConfigSet(&tunnel));
  };
  for (int round = 0; round < 60; ++round) {
    const std::string names[] = {"a" + std::to_string(round), "b" + std::to_string(round)};
    std::thread other(set, names[1]);
    set(names[0]);
    other.join();
    ZARNTUNNELCONF tunnel{};
    EXPECT_EQ(0, ZARNTunnelConfigGet(&tunnel)) << LogText();
    ASSERT_STREQ(tunnel.szUserId, tunnel.szPassword) << round;
  }
}

TEST(Schedule, TheWeekBeginsOnSundayAndEndsWithSaturdayInLocalTime) {
  constexpr std::time_t kFriday = 1735945200;  // 2025-01-03 23:00 UTC
  const auto at = [](const char* zone, std::time_t time) {
    ::setenv("TZ", zone, 1);
    SetWallClock(time - std::time(nullptr));
    const int index = ZARNSchedGetNowIndex();
    SetWallClock(0);
    return index;
  };
  constexpr std::time_t kDay = 86400;
  EXPECT_EQ(143, at("UTC0", kFriday));
  EXPECT_EQ(167, at("UTC0", kFriday + kDay + 3590));
  EXPECT_EQ(0, at("UTC0", kFriday + kDay + 3600));
  EXPECT_EQ(0, at("XXX-1", kFriday + kDay)) << "an hour to the east";
  EXPECT_EQ(23, at("XXX1", kFriday + 2 * kDay + 3600));
}
