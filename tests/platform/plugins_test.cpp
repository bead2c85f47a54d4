// Plugin events as plugins see them, and the services behind the init tools.
#include <gtest/gtest.h>
#include <poll.h>
#include <syslog.h>

#include <zarnsdk/zarnsdk.h>

#include "frame/os/containers.h"
#include "support/appliance.h"

using namespace test;

namespace {

bool timeFlies = false;

const std::string kFolder = "/usr/zarn/plugins/net/test_event/";

PKOPAPLUGIN Open() {
  PKOPAPLUGIN plugin = nullptr;
  EXPECT_EQ(0, KOPAPluginSDKInit("net", "net/test_event", &plugin));
  return plugin;
}

void WritePlugin(const std::string& name, const std::string& script, int mode = 0755) {
  WriteFile(kFolder + name, "#!/bin/sh\n" + script + "\n", mode);
}

}  // namespace

// A wait of seconds that is asked for while time flies lasts 300 ms.
#pragma GCC visibility push(default)
extern "C" int poll(pollfd* fds, nfds_t count, int milliseconds) {
  const int limit = timeFlies && milliseconds > 1000 ? 300 : milliseconds;
  const timespec time{limit / 1000, limit % 1000 * 1000000L};
  return ::ppoll(fds, count, limit < 0 ? nullptr : &time, nullptr);
}
#pragma GCC visibility pop

TEST(Plugins, RunInNameOrderWithStageAndArguments) {
  const std::string record =
      "echo \"${0##*/} $1 $IFNAME [$TEXT] $LIST_1 $LIST_2 $LIST_COUNT\" >> /run/seen";
  WritePlugin("20-b", record);
  WritePlugin("10-a", record + "; exit 9");
  WritePlugin("30-not-executable", record, 0644);
  frame::StringList list(2);
  KOPACSzListPush(list.Out(), "x");
  KOPACSzListPush(list.Out(), "y z");
  PKOPAPLUGIN plugin = Open();
  EXPECT_EQ(0, KOPAPluginSetArgByInt(plugin, "IFNAME", -7));
  EXPECT_EQ(0, KOPAPluginSetArg(plugin, "TEXT", "$(touch /run/evil) \"quoted\""));
  EXPECT_EQ(0, KOPAPluginSetArgByArray(plugin, "LIST", list.Get()));
  EXPECT_GT(0, KOPAPluginAction(4, plugin)) << "one of them failed";
  EXPECT_EQ(0, KOPAPluginSetArg(plugin, "IFNAME", "eth0"));
  RemoveFile(kFolder + "10-a");
  EXPECT_EQ(0, KOPAPluginAction(5, plugin));
  EXPECT_GT(0, KOPAPluginAction(3, plugin));
  KOPAPluginExit(plugin);
  EXPECT_EQ(
      "10-a pre -7 [$(touch /run/evil) \"quoted\"] x y z 2\n"
      "20-b pre -7 [$(touch /run/evil) \"quoted\"] x y z 2\n"
      "20-b post eth0 [$(touch /run/evil) \"quoted\"] x y z 2\n",
      ReadFile("/run/seen"));
  EXPECT_FALSE(FileExists("/run/evil"));
  EXPECT_NE(std::string::npos, LogText().find("10-a pre failed with exit status 9")) << LogText();
}

TEST(Plugins, OneThatDoesNotEndIsEndedWithItsChildren) {
  WritePlugin("10-hangs", "sleep 600 & echo $! > /run/child; wait");
  WritePlugin("20-next", "touch /run/next");
  timeFlies = true;
  PKOPAPLUGIN plugin = Open();
  EXPECT_GT(0, KOPAPluginAction(5, plugin));
  KOPAPluginExit(plugin);
  EXPECT_TRUE(FileExists("/run/next"));
  EXPECT_EQ(1,
            LogCount(LOG_ERR, "", "plugin " + kFolder + "10-hangs post was ended after 30 seconds"))
      << LogText();
  const int child = KOPACReadPidFile("/run/child");
  ASSERT_LT(0, child);
  char name[32] = "";
  for (int i = 0; i < 100 && KOPACProcGetByPid(child, name, sizeof name) == 0; ++i)
    ::poll(nullptr, 0, 10);
  EXPECT_GT(0, KOPACProcGetByPid(child, name, sizeof name)) << "still there: " << name;
}

TEST(Plugins, OnlyArgumentNamesAreTaken) {
  PKOPAPLUGIN plugin = Open();
  for (const char* name : {"", "LD=", "path", "A B", "A\nB", "PATH", "LD_PRELOAD"}) {
    EXPECT_GT(0, KOPAPluginSetArg(plugin, name, "x")) << name;
  }
  EXPECT_GT(0, KOPAPluginSetArg(plugin, "A", nullptr));
  EXPECT_EQ(0, KOPAPluginAction(4, plugin)) << "an event that nobody waits for";
  KOPAPluginExit(plugin);
  PKOPAPLUGIN none = nullptr;
  EXPECT_GT(0, KOPAPluginSDKInit("net", "../../../run", &none));
  EXPECT_EQ(0, KOPAPluginHasInit(none));
  KOPAPluginExit(none);
}

TEST(Services, AreAskedThroughTheInitTools) {
  RecordTool("/sbin/initctl", 0, "ddns start/running, process 12\n");
  EXPECT_EQ(1, KOPAServiceIsRunning("ddns"));
  EXPECT_EQ(0, KOPAServiceIsRunning("ddn")) << "the whole name";
  EXPECT_EQ(0, KOPAServiceReload("ddns"));
  EXPECT_EQ(
      (Lines{"/sbin/initctl status ddns", "/sbin/initctl status ddn", "/sbin/initctl reload ddns"}),
      RecordedCalls());
  EXPECT_GT(0, KOPAServiceReload("--help"));
  int run = -1;
  EXPECT_GT(0, KOPAServicecfgRunKeyGet("zarnother", &run));
  WriteFile("/etc/zarnservice/zarnother.conf", "run=yes\n");
  EXPECT_EQ(0, KOPAServicecfgRunKeyGet("zarnother", &run));
  EXPECT_EQ(1, run);
  WriteFile("/etc/zarnservice/zarnother.conf", "run=no\n");
  EXPECT_EQ(0, KOPAServicecfgRunKeyGet("zarnother", &run));
  EXPECT_EQ(2, run);
  WriteFile("/etc/zarnservice/zarnother.conf", "run=perhaps\n");
  EXPECT_GT(0, KOPAServicecfgRunKeyGet("zarnother", &run));
}
