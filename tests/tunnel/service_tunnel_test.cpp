// The tunnel: what is stored and who can read it, and the client as a real process.
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <zarnnetsdk/tunnel.h>

#include "frame/base/text.h"
#include "support/appliance.h"

using namespace test;

namespace {
std::time_t presentTime = 0;  // where it is set, the clock shows this
}

extern "C" std::time_t time(std::time_t* copy) noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::time_t seconds = presentTime != 0 ? presentTime : now.tv_sec;
  if (copy != nullptr) *copy = seconds;
  return seconds;
}

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

std::string Read(int enabled) {
  ZARNTUNNELCONF conf{};
  EXPECT_EQ(enabled, ZARNTunnelConfigGet(&conf)) << LogText();
  return Text(conf);
}

ino_t Inode(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

struct Tunnel : testing::Test {
  Tunnel() {
    WriteIfcfg("tun", kStored);
    const ZARNTUNNELCONF first = Conf(false, "b1.example", "bob", kSecret);
    EXPECT_EQ(0, ZARNTunnelConfigSet(&first)) << LogText();
  }
  // The secret is in no log, in no argument and in no file that others may read.
  ~Tunnel() override {
    EXPECT_EQ(std::string::npos, (LogText() + ChildLog()).find(kSecret));
    EXPECT_EQ(
        "", Shell(frame::Format("find /etc /run /tmp /var -xdev -type f -exec grep -slF '%s' {} +",
                                kSecret)));
  }
  // Files, and so their times, are as they were: equal text is not written again.
  template <class Action>
  static void KeepsFile(const std::string& path, Action action) {
    const ino_t inode = Inode(path);
    const std::string text = ReadFile(path);
    action();
    EXPECT_EQ(inode, Inode(path)) << path;
    EXPECT_EQ(text, ReadFile(path)) << path;
  }
};

}  // namespace

TEST_F(Tunnel, SettingsAreStoredReadBackAndWrittenOnlyWhereTheyDiffer) {
  EXPECT_EQ(kStored, ReadIfcfg("tun"));
  EXPECT_EQ(64U, ReadFile(kPasswordFile).size());
  EXPECT_EQ(0600, FileMode(kPasswordFile));
  EXPECT_EQ("0|b1.example|bob|Tr0ub4dor&3", Read(0));
  ZARNTUNNELCONF conf = Conf(false, "", "bob", "other");
  KeepsFile(IfcfgPath("tun"), [&] { EXPECT_EQ(0, ZARNTunnelConfigSet(&conf)); });
  EXPECT_EQ("0|b1.example|bob|other", Read(0));
  conf = Conf(false, "b2", "eve", "other");
  KeepsFile(kPasswordFile, [&] { EXPECT_EQ(0, ZARNTunnelConfigSet(&conf)); });
  EXPECT_EQ("# tunnel\nIPV6INIT=auto\nSERVER=b2\nLOGIN=login\nUSERID=eve\n", ReadIfcfg("tun"));
  conf = Conf(true, "b2");
  KeepsFile(kPasswordFile, [&] { EXPECT_EQ(0, ZARNTunnelConfigSet(&conf)); });
  EXPECT_EQ("# tunnel\nIPV6INIT=auto\nSERVER=b2\nLOGIN=anonymous\nUSERID=\n", ReadIfcfg("tun"));
  WriteFile("/etc/zarnservice/zarntunnel.conf", "run=\"yes\"\n");
  EXPECT_EQ("1|b2||", Read(1));
  conf = Conf(false, "b2");
  EXPECT_EQ(0, ZARNTunnelConfigSet(&conf)) << "a login without a password";
  EXPECT_EQ("0|b2||", Read(1)) << "must not come by the one of an earlier login";
}

TEST_F(Tunnel, PasswordsThatCannotBeHadReadAsEmpty) {
  const ZARNTUNNELCONF longest = Conf(false, "b", "bob", std::string(31, 'p'));
  EXPECT_EQ(0, ZARNTunnelConfigSet(&longest));
  EXPECT_EQ(Text(longest), Read(0));
  WriteFile(kPasswordFile, std::string(32, 'c'), 0600);
  EXPECT_EQ("0|b|bob|", Read(0));
  EXPECT_EQ(1, LogCount(LOG_ERR, "TunnelPasswdGet service_tunnel_config_get",
                        ": lenPasswdEnc is not enough!!"))
      << LogText();
  WriteFile(kPasswordFile, "", 0600);
  EXPECT_EQ("0|b|bob|", Read(0));
  EXPECT_EQ(1, LogCount(LOG_INFO, "service_tunnel_config_get",
                        "file /etc/gogoc/.tunnel_passwd is empty"));
  RemoveFile(kPasswordFile);
  EXPECT_EQ("0|b|bob|", Read(0));
  WriteFile(kPasswordFile, "garbled", 0600);
  WriteFile("/etc/zarncore/cipher.key", "damaged", 0600);
  EXPECT_EQ("0|b|bob|", Read(0));
}

TEST_F(Tunnel, WhatCannotBeStoredLeavesEverythingAsItIs) {
  std::vector<ZARNTUNNELCONF> unfit{Conf(false, "b\nLOGIN=anonymous", "bob", "pw"),
                                    Conf(false, "b", "bob\rX=y", "pw"),
                                    Conf(false, "b", "bob", "p\nX=y"), Conf(true, "b\x7F")};
  for (int field = 0; field < 3; ++field) {
    unfit.push_back(Conf(false, "b", "bob", "pw"));
    ZARNTUNNELCONF& conf = unfit.back();
    if (field == 0) std::fill_n(conf.szServer, sizeof conf.szServer, 's');
    if (field == 1) std::fill_n(conf.szUserId, sizeof conf.szUserId, 'u');
    if (field == 2) std::fill_n(conf.szPassword, sizeof conf.szPassword, 'p');
  }
  const auto allFail = [&] {
    for (const ZARNTUNNELCONF& conf : unfit) {
      KOPACErrSetEx(0, "", 0);
      EXPECT_EQ(-1, ZARNTunnelConfigSet(&conf)) << Text(conf);
      EXPECT_EQ(0x0D00, KOPACErrGet());
    }
    EXPECT_EQ(-1, ZARNTunnelConfigSet(nullptr));
    EXPECT_EQ(-1, ZARNTunnelConfigGet(nullptr));
    unfit.pop_back();
    for (const ZARNTUNNELCONF& conf : unfit)
      EXPECT_EQ(-1, ZARNTunnelExecute(0, &conf)) << Text(conf);
  };
  KeepsFile(IfcfgPath("tun"), [&] { KeepsFile(kPasswordFile, allFail); });
  EXPECT_EQ(1, LogCount(LOG_ERR, "TunnelPasswdSet service_tunnel_config_set",
                        ": lenPassword is not enough!!"));
  const ZARNTUNNELCONF conf = Conf(false, "b", "eve", "new");
  const auto fails = [&](const char* message) {
    Log().clear();
    EXPECT_EQ(-1, ZARNTunnelConfigSet(&conf));
    EXPECT_EQ(1, LogCount(LOG_ERR, "service_tunnel_config_set", message)) << LogText();
  };
  WriteFile("/etc/zarnservice/zarntunnel.conf", "run=\"perhaps\"\n");
  fails("failed to get Tunnel Config");
  WriteFile("/etc/zarnservice/zarntunnel.conf", "run=\"no\"\n");
  RemoveFile(IfcfgPath("tun"));
  fails("failed to get Tunnel Config");
  WriteIfcfg("tun", kStored);
  MountEmpty("/etc/gogoc", "4k");
  WriteFile(kPasswordFile, "kept", 0600);
  fails("failed to save tunnel password");
  EXPECT_EQ("kept", ReadFile(kPasswordFile));
  EXPECT_EQ(Lines{".tunnel_passwd"}, FolderEntries("/etc/gogoc"));
  EXPECT_EQ(kStored, ReadIfcfg("tun"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "service_tunnel_config_set", "failed to set passwd"));
}

namespace {

// The appliance's own script and client run as real processes; the settings that the script finds
// are kept, with their mode, for the owner alone.
struct TunnelRun : Tunnel {
  TunnelRun() {
    SleepUntilAChildEnds();
    WriteFile("/root/rc.tun", ReadFile(kScript), 0755);
    WriteFile(kScript,
              "#!/bin/sh\necho \"$*\" >>/run/recorded-calls\n"
              "rm -rf /root/seen; cp -p /etc/gogoc/gogoc.conf /root/seen 2>/dev/null\n"
              "exec /root/rc.tun \"$@\"\n",
              0755);
    EXPECT_EQ(0, ::chdir("/tmp"));
  }
  static void Broker(const std::string& word) { WriteFile("/etc/gogoc/broker", word + "\n"); }
  static std::string Address() { return Shell("ip -6 -br address show dev tun scope global"); }
  static bool ClientRuns() { return KOPACIsProcAlive("/usr/bin/gogoc") == 1; }
  static std::string Settings(const std::string& retries, const std::string& user) {
    return "host_type=host\nprefixlen=64\nif_prefix=\ndns_server=\ngogoc_dir=/etc/gogoc\n" +
           retries +
           "keepalive=yes\nkeepalive_interval=30\ntunnel_mode=v6udpv4\nif_tunnel_v6v4=sit1\n"
           "if_tunnel_v6udpv4=tun\nif_tunnel_v4v6=sit0\nclient_v4=auto\nclient_v6=auto\n"
           "template=linux\nproxy_client=no\nbroker_list=tsp-broker-list.txt\n"
           "last_server=tsp-last-server.txt\nalways_use_same_server=no\nlog_file=0\n"
           "log_filename=gogoc.log\nlog_rotation=yes\nlog_rotation_size=32\n"
           "log_rotation_delete=no\nsyslog_facility=USER\n" +
           user;
  }
};

const char kForGood[] = "auto_retry_connect=yes\nretry_delay=10\nretry_delay_max=30\n";
const char kForAWhile[] = "auto_retry_connect=no\nretry_delay=3\nretry_delay_max=5\n";

}  // namespace

TEST_F(TunnelRun, ATunnelComesUpWithTheStoredSettingsAndGoesDown) {
  RecordTool("/sbin/initctl", 0, "zarnrelayd start/running, process 7\n");
  WriteFile("/tmp/tsp-broker-list.txt", "list\n");
  WriteFile(kConf, "stale=1\n", 0666);
  ASSERT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, nullptr)) << LogText() << ChildLog();
  EXPECT_EQ(
      Settings(kForGood, "server=b1.example\nauth_method=any\nuserid=bob\npasswd=Tr0ub4dor&3\n"),
      ReadFile("/root/seen"));
  EXPECT_EQ(0600, FileMode("/root/seen"));
  EXPECT_FALSE(FileExists(kConf));
  EXPECT_NE(std::string::npos, Address().find("2001:db8:f00::2/64")) << Shell("ip address");
  EXPECT_EQ(1, LogCount(LOG_INFO, "service_tunnel_execute", "tunnel connection setup"));
  EXPECT_NE(std::string::npos, ChildLog().find(" done gogoc processing\n"));
  EXPECT_EQ("list\n", ReadFile("/tmp/tsp-broker-list.txt.bak"));
  const ZARNTUNNELCONF other = Conf(true, "b9", "ignored\n", "ignored\n");
  EXPECT_EQ(-1, ZARNTunnelExecute(ZARNTUNNEL_RESTART, &other)) << "the user id would be a line";
  const ZARNTUNNELCONF anonymous = Conf(true, "b9", "ignored", "ignored\n");
  ASSERT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_RESTART, &anonymous)) << LogText() << ChildLog();
  EXPECT_EQ(Settings(kForAWhile, "server=b9\nauth_method=anonymous\nuserid=\npasswd=\n"),
            ReadFile("/root/seen"));
  Broker("sticks");
  EXPECT_EQ(-1, ZARNTunnelExecute(ZARNTUNNEL_STOP, &other));
  EXPECT_EQ(1, LogCount(LOG_ERR, "service_tunnel_execute", "gogoc still alive, failed to stop"));
  EXPECT_NE(std::string::npos, ChildLog().find(" excute command /etc/gogoc/rc.tun stop failed\n"));
  Broker("accepts");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_STOP, nullptr)) << LogText();
  EXPECT_FALSE(ClientRuns());
  EXPECT_FALSE(FileExists("/root/seen")) << "a stop makes no settings";
  const std::string relay = "/sbin/initctl status zarnrelayd";
  const std::string reload = "/sbin/initctl reload zarnrelayd";
  EXPECT_EQ(
      (Lines{"start", relay, reload, "restart", relay, reload, "stop", "stop", relay, reload}),
      RecordedCalls());
}

TEST_F(TunnelRun, AClientWithoutATunnelIsLeftTryingAfterAStartAndEndedOtherwise) {
  Broker("silent");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, nullptr)) << LogText();
  EXPECT_TRUE(ClientRuns());
  EXPECT_EQ(0, LogCount(LOG_INFO, "service_tunnel_execute", "tunnel connection setup"));
  EXPECT_EQ(-1, ZARNTunnelExecute(ZARNTUNNEL_RESTART, nullptr));
  EXPECT_FALSE(ClientRuns());
  Broker("deaf");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, nullptr));
  Log().clear();
  EXPECT_EQ(-1, ZARNTunnelExecute(ZARNTUNNEL_STOP, nullptr));
  EXPECT_EQ(1, LogCount(LOG_ERR, "service_tunnel_execute", "gogoc hangs, terminate it."));
  EXPECT_FALSE(ClientRuns()) << "also one that hears no request to end";
  Broker("refuses");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, nullptr));
  EXPECT_FALSE(FileExists(kConf));
  EXPECT_EQ((Lines{"start", "restart", "start", "stop", "start"}), RecordedCalls());
}

TEST_F(TunnelRun, WithoutSettingsNothingRunsAndAnUnknownActionTidiesUp) {
  WriteFile(kConf, "passwd=left\n");
  EXPECT_EQ(0, ZARNTunnelExecute(3, nullptr));
  EXPECT_FALSE(FileExists(kConf));
  EXPECT_EQ(1, LogCount(LOG_INFO, "service_tunnel_execute",
                        "unable to move broker_list, tsp-broker-list.txt, errno:2, No such file "
                        "or directory"))
      << LogText();
  RemoveFile(IfcfgPath("tun"));
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, nullptr));
  const ZARNTUNNELCONF conf = Conf(true, "b");
  MountEmpty("/etc/gogoc", "4k");
  WriteFile("/etc/gogoc/full", std::string(4096, 'x'));
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf));
  EXPECT_EQ(Lines{"full"}, FolderEntries("/etc/gogoc"));
  EXPECT_EQ(Lines{}, RecordedCalls());
  const std::string said = ChildLog();
  std::size_t at = 0;
  for (const char* const message :
       {"unable to get Tunnel config, file crashed or not set.\n",
        "Failed to make tunnel config file.\n", "failed to make gogoc config file\n",
        "Failed to make tunnel config file.\n"}) {
    at = said.find(message, at);
    ASSERT_NE(std::string::npos, at) << message << said;
  }
}

TEST(TunnelWait, AScriptThatHangsHoldsTheCallerForSoLongOnly) {
  WriteFile("/etc/gogoc/broker", "blocks\n");
  const ZARNTUNNELCONF conf = Conf(true, "b");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf));
  EXPECT_EQ(45000, SleptMilliseconds());
  EXPECT_EQ(1, LogCount(LOG_ERR, "service_tunnel_execute", "connecting to tunnel broker timeout"));
}

TEST(Schedule, TheWeekBeginsOnSundayAndEndsWithSaturdayInLocalTime) {
  constexpr std::time_t kFriday = 1735945200;  // 2025-01-03 23:00 UTC
  const auto at = [](const char* zone, std::time_t time) {
    ::setenv("TZ", zone, 1);
    presentTime = time;
    const int index = ZARNSchedGetNowIndex();
    presentTime = 0;
    return index;
  };
  constexpr std::time_t kDay = 86400;
  EXPECT_EQ(143, at("UTC0", kFriday));
  EXPECT_EQ(167, at("UTC0", kFriday + kDay + 3599));
  EXPECT_EQ(0, at("UTC0", kFriday + kDay + 3600));
  EXPECT_EQ(0, at("XXX-1", kFriday + kDay)) << "an hour to the east";
  EXPECT_EQ(23, at("XXX1", kFriday + 2 * kDay + 3600));
}
