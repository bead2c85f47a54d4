// SPDX-License-Identifier: Apache-2.0
// How operations fail: with a code and a place of their own.
#include <functional>
#include <thread>

#include <zarnhacore/zarnhacore.h>
#include <zarnplvcore/zarnplvcore.h>
#include <zarnsdk/zarnsdk.h>

#include "fixture.h"

using namespace test;

namespace {

const char kFile[] = "/etc/settings";
const char kNone[] = "/nofolder/none";
constexpr char* kEnd = nullptr;

// An operation, described by its own text. Negative and null answers are failures.
struct Operation {
  const char* text;
  std::function<int()> run;
};
#define CALL(expression)                              \
  {                                                   \
#expression, [&] { return Answered(expression); } \
  }
int Answered(int result) {
  return result;
}
int Answered(const void* pointer) {
  return pointer != nullptr ? 0 : -1;
}

void ExpectFailures(const char* error, const std::vector<Operation>& operations) {
  for (const Operation& operation : operations) {
    SetForeignError();
    EXPECT_GT(0, operation.run()) << operation.text;
    EXPECT_EQ(error, ErrorNow()) << operation.text;
  }
}

int Get(const char* path) {
  char value[16];
  return KOPACFileGetKeyValue(path, "A", value, sizeof value, 0);
}
int Set(const char* key, const char* value, const char* format = nullptr) {
  return KOPACFileSetKeyValue(kFile, key, value, format);
}
int SetIn(const char* path) {
  return KOPACFileSetKeyValue(path, "B", "2", nullptr);
}
int Execute(const char* path) {
  return KOPACExecl(path, 187, kEnd);
}
PKOPAPLUGIN Event(const char* name) {
  PKOPAPLUGIN plugin = nullptr;
  EXPECT_EQ(0, KOPAPluginSDKInit("net", name, &plugin));
  return plugin;
}

}  // namespace

TEST(Failures, NameThemselves) {
  WriteFile(kFile, "A=1\n");
  WriteFile("/run/three", "#!/bin/sh\nexit 3\n", 0755);
  WriteFile("/run/killed", "#!/bin/sh\nkill -9 $$\n", 0755);
  WriteFile("/etc/zarnservice/odd.conf", "run=perhaps\n");
  WriteFile("/usr/zarn/plugins/net/failing/10", "#!/bin/sh\nexit 1\n", 0755);
  RecordTool("/sbin/initctl", 1);
  RecordTool("/sbin/stop", 1);
  List list;
  Hash hash;
  char buffer[16] = "";
  char noTemplate[] = "/etc/template";
  char noFolder[] = "/nofolder/XXXXXX";
  int run = 0;
  PKOPAPLUGIN plugin = Event("failing");
  ExpectFailures("0D00 key_file",
                 {CALL(Set("A", "1\nROOT=yes")), CALL(Set("A", "1\rROOT=yes")),
                  CALL(Set("A\nB", "1")), CALL(Set("A=B", "1")), CALL(Set("", "1")),
                  CALL(Set(nullptr, "1")), CALL(Set("A", nullptr)), CALL(Set("A", "2", "%n%s\n"))});
  ExpectFailures("0D00 line_file", {CALL(KOPACFileAddLine(kFile, nullptr, "x\ny", 0)),
                                    CALL(KOPACFileReplaceSubStr(kFile, "1", "1\nROOT=yes")),
                                    CALL(KOPACFileGetLine(kFile, "A", buffer, sizeof buffer, 3)),
                                    CALL(KOPACFileITmpName("/etc/hosts", buffer, 12)),
                                    CALL(KOPACFileTempFileOpen(noTemplate))});
  ExpectFailures("0D00 locks",
                 {CALL(KOPACFileLock(0x107, 0)), CALL(KOPACFileUnlockByFile(nullptr))});
  ExpectFailures("0D00 list", {CALL(KOPACSzListPush(list.Out(), nullptr))});
  ExpectFailures("0D00 hash", {CALL(KOPACSzHashSetValue(&hash.hash, "k", nullptr))});
  ExpectFailures("0D00 text", {CALL(KOPACStrTok(buffer, ",", nullptr)),
                               CALL(KOPACStrTokIndex(buffer, ",", -1))});
  ExpectFailures("0D00 process",
                 {CALL(Execute("true")), CALL(Execute(nullptr)), CALL(KOPACPclose(stdin)),
                  CALL(KOPACPopen("/bin/cat", "w", kEnd))});
  ExpectFailures("0D00 process_table", {CALL(KOPACKill("", 1)), CALL(KOPACPs("", buffer, 16))});
  ExpectFailures("0D00 system", {CALL(KOPACModuleIsLoad("../x"))});
  ExpectFailures("0D00 cipher", {CALL(KOPACCryptBufCrypt("secret", 6, buffer, 5))});
  ExpectFailures(
      "0D00 plugin",
      {CALL(KOPAPluginSDKInit("net", "../../../run", &plugin)),
       CALL(KOPAPluginSetArg(plugin, "LD_PRELOAD", "x")),
       CALL(KOPAPluginSetArg(plugin, "PATH", "x")), CALL(KOPAPluginSetArg(plugin, "path", "x")),
       CALL(KOPAPluginSetArg(plugin, "A B", "x")), CALL(KOPAPluginSetArg(plugin, "LD=", "x")),
       CALL(KOPAPluginSetArg(plugin, "A", nullptr)), CALL(KOPAPluginAction(3, plugin))});
  ExpectFailures("0D00 service",
                 {CALL(KOPAServiceReload("--help")), CALL(KOPAServicecfgRunKeyGet("x", nullptr))});
  ExpectFailures("0D00 zarnhacore", {CALL(ZARNHAGetRelatedIFInfo("eth0", nullptr))});

  ExpectFailures(
      "0900 key_file",
      {CALL(Get(kNone)), CALL(KOPACFileCheckKeyValue(kNone, "A", "1", 0)), CALL(SetIn(kNone)),
       CALL(KOPACFileRemoveKey("/etc/none", "A")), CALL(KOPACFileRemoveKey("/etc/none", "a=b")),
       CALL(KOPAServicecfgRunKeyGet("none", &run))});
  ExpectFailures("0900 line_file",
                 {CALL(KOPACFileReadLines(kNone, list.Out())), CALL(KOPACFileTouch(kNone)),
                  CALL(KOPACFileGetLine(kNone, "A", buffer, sizeof buffer, 2)),
                  CALL(KOPACFileReplaceSubStr("/etc/none", "a", "b")),
                  CALL(KOPACFileEnumDir("/nofolder", nullptr, list.Out(), 0)),
                  CALL(KOPACFileTempFileOpen(noFolder)),
                  CALL(KOPACFileITmpName("/none/x", buffer, sizeof buffer))});
  ExpectFailures("0900 process_table", {CALL(KOPACReadPidFile(kNone))});
  ExpectFailures("0A00 key_file",
                 {CALL(Get("/etc")), CALL(Get("/proc/self/mem")), CALL(SetIn("/etc"))});
  ExpectFailures("0400 locks", {CALL(KOPACFileUnlock(0x300))});
  ExpectFailures("2A00 process",
                 {CALL(Execute(kNone)), CALL(Execute("/run/three")), CALL(Execute("/run/killed")),
                  CALL(KOPACPopen(kNone, "r", kEnd)), CALL(KOPAServiceReload("ddns")),
                  CALL(KOPAServicectlJobStop("job"))});
  ExpectFailures("2A00 plugin", {CALL(KOPAPluginAction(4, plugin))});
  ExpectFailures("4000 process_table", {CALL(KOPACReadPidFile(kFile))});
  const int line = KOPACErrorGetLine();
  ExpectFailures("4000 service", {CALL(KOPAServicecfgRunKeyGet("odd", &run))});
  EXPECT_NE(line, KOPACErrorGetLine());
  EXPECT_EQ("A=1\n", ReadFile(kFile)) << "what was refused has changed nothing";
  EXPECT_EQ(3, KOPACExec("/run/three", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ("2A00 process", ErrorNow()) << "and its status is told";
  KOPAPluginExit(plugin);
}

TEST(Failures, WhatIsAbsentIsNone) {
  WriteFile(kFile, "A=1\n");
  WriteFile("/run/three", "#!/bin/sh\nexit 3\n", 0755);
  for (const char* path : {"/etc/zarnha.conf", "/etc/zarnplv.conf", "/etc.defaults/zarninfo.conf"})
    RemoveFile(path);
  char buffer[16];
  List list;
  SetForeignError();
  EXPECT_EQ(0, KOPACFileGetKeyValue(kFile, "B", buffer, sizeof buffer, 0));
  EXPECT_EQ(0, KOPACFileCheckKeyValue(kFile, "A", "2", 0));
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B"));
  EXPECT_EQ(0, KOPACFileGetLine(kFile, "B", buffer, sizeof buffer, 2));
  EXPECT_EQ(nullptr, KOPACSzListGet(list, 0));
  EXPECT_GT(0, KOPACSzListFind(list, "x"));
  EXPECT_EQ(0, KOPACFileExist(kNone) + KOPACFileCheckDir(kNone) + KOPACIsProcAlive("/none"));
  EXPECT_EQ(0, ZARNHAIsActive() + ZARNHAIsRunning() + ZARNHAHasHAIF() + ZARNIsDockerPLV());
  EXPECT_EQ(0, KOPACSupportDualhead());
  EXPECT_GT(0, ZARNHAGetMac("eth0", buffer, sizeof buffer));
  PKOPAPLUGIN plugin = Event("nobody_waits");
  EXPECT_EQ(0, KOPAPluginAction(4, plugin));
  KOPAPluginExit(plugin);
  EXPECT_EQ(3, KOPACPclose(KOPACPopen("/run/three", "r", kEnd)));
  EXPECT_EQ("7777 foreign", ErrorNow());
}

// What cannot be seen must not pass for what is not there.
TEST(Failures, TellOfWhatHasRunOut) {
  WriteFile(kFile, "A=1\n");
  WriteFile("/usr/zarn/plugins/net/some/10", "#!/bin/sh\n", 0755);
  WriteFile("/etc/bound", "A=1\n");
  EXPECT_EQ("", Shell("mount --bind /etc/bound /etc/bound; mkfifo /etc/pipe"));
  const LockHolder other(0x106);
  List list;
  PKOPAPLUGIN plugin = Event("some");
  ExpectFailures("0900 key_file", {CALL(Get("/etc/pipe")), CALL(SetIn("/etc/pipe"))});
  ExpectFailures("0400 locks", {CALL(KOPACFileLock(0x105, 5))});
  ExpectFailures("2800 key_file", {CALL(SetIn("/etc/bound"))});
  const NoDescriptors none;
  ExpectFailures("0900 key_file", {CALL(Get(kFile))});
  ExpectFailures("0900 line_file", {CALL(KOPACFileEnumDir("/etc", nullptr, list.Out(), 0)),
                                    CALL(KOPAPluginAction(4, plugin))});
  ExpectFailures("0900 process_table", {CALL(KOPACIsProcAlive("/sbin/none"))});
  ExpectFailures("0900 process", {CALL(KOPACPopen("/bin/true", "r", kEnd))});
  ExpectFailures("0400 locks", {CALL(KOPACFileLock(0x906, 0))});
  KOPAPluginExit(plugin);
}

TEST(ErrorState, IsTheThreads) {
  KOPACErrSetEx(0x0D00, "here", 7);
  std::thread([] {
    EXPECT_EQ(0, KOPACErrGet());
    KOPACErrSetEx(0x0900, "there", 8);
  }).join();
  EXPECT_EQ("0D00 here", ErrorNow());
  EXPECT_EQ(7, KOPACErrorGetLine());
}
