// SPDX-License-Identifier: Apache-2.0
// Plugin events as plugins see them, and the services behind the init tools.
#include <zarnsdk/zarnsdk.h>

#include "fixture.h"
#include "support/clock.h"

using namespace test;

namespace {

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

TEST(Plugins, RunInNameOrderWithStageAndArguments) {
  const std::string record =
      "echo \"${0##*/} $1 $IFNAME [$TEXT] $LIST_1 $LIST_2 $LIST_COUNT\" >> /run/seen";
  WritePlugin("20-b", record);
  WritePlugin("10-a", record + "; exit 9");
  WritePlugin("30-not-executable", record, 0644);
  List list;
  KOPACSzListPush(list.Out(), "x");
  KOPACSzListPush(list.Out(), "y z");
  PKOPAPLUGIN plugin = Open();
  EXPECT_EQ(0, KOPAPluginSetArgByInt(plugin, "IFNAME", -7));
  EXPECT_EQ(0, KOPAPluginSetArg(plugin, "TEXT", "$(touch /run/evil) \"quoted\""));
  EXPECT_EQ(0, KOPAPluginSetArgByArray(plugin, "LIST", list));
  EXPECT_GT(0, KOPAPluginAction(4, plugin)) << "one of them failed";
  EXPECT_EQ(0, KOPAPluginSetArg(plugin, "IFNAME", "eth0"));
  RemoveFile(kFolder + "10-a");
  EXPECT_EQ(0, KOPAPluginAction(5, plugin));
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
  RunClockFaster(100);
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
  EXPECT_TRUE(Comes([&] { return KOPACProcGetByPid(child, name, sizeof name) < 0; }))
      << "still there: " << name;
}

TEST(Plugins, GetTheCallersVariablesAndTheirOwn) {
  WritePlugin("10", "/usr/bin/env | grep -vE '^(_|PWD|SHLVL|OLDPWD)=' | sort >> /run/seen");
  PKOPAPLUGIN plugin = Open();
  EXPECT_EQ(0, KOPAPluginSetArg(plugin, "IFNAME", "eth0"));
  ::clearenv();
  EXPECT_EQ(0, KOPAPluginAction(4, plugin)) << "a caller that has no environment at all";
  ::setenv("PATH", "/bin", 1);
  ::setenv("IFNAME", "the caller's", 1);
  ::setenv("MINE", "kept", 1);
  EXPECT_EQ(0, KOPAPluginAction(4, plugin));
  KOPAPluginExit(plugin);
  EXPECT_EQ(
      "IFNAME=eth0\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\nPLUGIN_ARGS=IFNAME\n"
      "IFNAME=eth0\nMINE=kept\nPATH=/bin\nPLUGIN_ARGS=IFNAME\n",
      ReadFile("/run/seen"));
}

TEST(Services, AreAskedThroughTheInitTools) {
  RecordTool("/sbin/initctl", 0, "ddns start/running, process 12\n");
  EXPECT_EQ(1, KOPAServiceIsRunning("ddns"));
  EXPECT_EQ(0, KOPAServiceIsRunning("ddn")) << "the whole name";
  EXPECT_EQ(0, KOPAServiceReload("ddns"));
  EXPECT_EQ(
      (Lines{"/sbin/initctl status ddns", "/sbin/initctl status ddn", "/sbin/initctl reload ddns"}),
      RecordedCalls());
  int run = -1;
  WriteFile("/etc/zarnservice/zarnother.conf", "run=yes\n");
  EXPECT_EQ(0, KOPAServicecfgRunKeyGet("zarnother", &run));
  EXPECT_EQ(1, run);
  WriteFile("/etc/zarnservice/zarnother.conf", "run=no\n");
  EXPECT_EQ(0, KOPAServicecfgRunKeyGet("zarnother", &run));
  EXPECT_EQ(2, run);
}
