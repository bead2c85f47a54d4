// SPDX-License-Identifier: Apache-2.0
// Settings files: what an edit keeps and what it leaves.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "fixture.h"
#include "support/children.h"

using namespace test;

namespace {

const char kFile[] = "/etc/settings";
const char kBare[] = "%s=%s\n";

int Set(const std::string& key, const std::string& value, const char* format = kBare) {
  return KOPACFileSetKeyValue(kFile, key.c_str(), value.c_str(), format);
}

// Type, mode, owner and number.
std::string StatusOf(const char* path) {
  return Shell(std::string("stat -c '%F %a %u %g %i' ") + path);
}
std::string WithoutNumber(const std::string& status) {
  return status.substr(0, status.rfind(' '));
}

}  // namespace

TEST(KeyFile, ReadingFindsTheKeyAndNothingElse) {
  WriteFile(kFile,
            "#A=0\nXA=1\nA =2\nAB=3\n A=4\nNOTE=A=5\nA=first\r\nA=second\nQ=\"two "
            "words\"\nH=\"half\nE=\nL=last");
  const struct {
    const char* key;
    const char* value;
  } rows[] = {{"A", "first"}, {"Q", "two words"}, {"H", "\"half"},
              {"L", "last"},  {"E", ""},          {"a", ""}};
  for (const auto& row : rows) {
    char value[64] = "before";
    EXPECT_EQ(std::strlen(row.value),
              static_cast<std::size_t>(KOPACFileGetKeyValue(kFile, row.key, value, 64, 0)));
    EXPECT_STREQ(row.value, value) << row.key;
  }
  char cut[4];
  EXPECT_EQ(3, KOPACFileGetKeyValue(kFile, "A", cut, sizeof cut, 0));
  EXPECT_STREQ("fir", cut);
  EXPECT_EQ(1, KOPACFileCheckKeyValue(kFile, "Q", "two words", 0));
  EXPECT_EQ(0, KOPACFileCheckKeyValue(kFile, "Q", "two", 0));
}

TEST(KeyFile, AnEditKeepsWhatItDoesNotKnow) {
  ::umask(077);
  WriteFile(kFile, "# top\nA=1\n\nB=2\nA=3\n=x\nnoise\r\nC=4", 0644);
  // Where another user runs the tests only one owner exists.
  ASSERT_TRUE(::chown(kFile, 12, 34) == 0 || errno == EINVAL);
  const std::string before = StatusOf(kFile);
  EXPECT_EQ(0, Set("A", "one"));
  EXPECT_EQ("# top\nA=one\n\nB=2\n=x\nnoise\r\nC=4", ReadFile(kFile)) << "in place, and once";
  EXPECT_EQ(0, Set("D", "100%s", "%s=\"%s\"\n"));
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B"));
  EXPECT_EQ("# top\nA=one\n\n=x\nnoise\r\nC=4\nD=\"100%s\"\n", ReadFile(kFile));
  const std::string after = StatusOf(kFile);
  EXPECT_EQ(WithoutNumber(before), WithoutNumber(after));
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B")) << "an absent key is gone already";
  EXPECT_EQ(0, Set("A", "one"));
  EXPECT_EQ(after, StatusOf(kFile)) << "what changes nothing writes nothing";
  RemoveFile(kFile);
  EXPECT_EQ(0, Set("N", "new"));
  EXPECT_EQ(0, KOPACFileTouch("/etc/touched"));
  EXPECT_EQ("N=new\n", ReadFile(kFile));
  EXPECT_EQ(0644, FileMode(kFile));
  EXPECT_EQ(0644, FileMode("/etc/touched"));
}

TEST(KeyFile, WhatAKilledWriterLeftGoesAndWhatOthersLaidThereStays) {
  const Lines before = FolderEntries("/etc");
  for (const char* name : {".settings.backup", ".settings2.zarncore-new", ".settings.zarncore-new"})
    WriteFile(std::string("/etc/") + name, "somebody's");
  EXPECT_EQ(0, Set("A", "1"));
  Lines others;
  std::ranges::set_difference(FolderEntries("/etc"), before, std::back_inserter(others));
  EXPECT_EQ((Lines{".settings.backup", ".settings2.zarncore-new", "settings"}), others);
}

TEST(KeyFile, ManyKeysAreOneRewriteInTheCallersOrder) {
  WriteFile(kFile, "KEEP=1\nOLD=2\nX=3\n");
  Hash set;
  Hash drop;
  for (const char* key : {"Z", "X", "M", "A"})
    KOPACSzHashSetValue(&set.hash, key, key);
  for (const char* key : {"OLD", "X"})
    KOPACSzHashSetValue(&drop.hash, key, "");
  EXPECT_EQ(0, KOPACFileSetKeys(kFile, set.hash, drop.hash, kBare));
  EXPECT_EQ("KEEP=1\nX=X\nZ=Z\nM=M\nA=A\n", ReadFile(kFile));
  EXPECT_EQ(0, KOPACFileSetKeys(kFile, set.hash, nullptr, nullptr)) << "no drop hash, bare form";
}

TEST(KeyFile, ALinkStaysALink) {
  WriteFile("/etc/target", "A=1\n");
  ASSERT_EQ(0, ::symlink("/etc/target", kFile) + ::symlink("/etc", "/run/link"));
  EXPECT_EQ(0, Set("A", "2"));
  EXPECT_EQ("A=2\n", ReadFile("/etc/target"));
  EXPECT_TRUE(StatusOf(kFile).starts_with("symbolic link"));
  EXPECT_EQ(0, KOPACFileSetKeyValue("/run/link/made", "A", "1", kBare)) << "a folder behind a link";
  EXPECT_EQ("A=1\n", ReadFile("/etc/made"));
}

TEST(KeyFile, AFullLockFolderStopsNobody) {
  ::mkdir("/run/lock/zarncore", 0755);
  MountEmpty("/run/lock/zarncore", "16k");
  Shell("cat /dev/zero >/run/lock/zarncore/filler");
  EXPECT_EQ(0, Set("A", "2"));
  EXPECT_EQ(0, KOPACFileLock(0x106, 1));
  const pid_t other = Start([] { return KOPACFileLock(0x106, 0) == 0 ? 1 : 0; });
  EXPECT_EQ(0, ExitStatusOf(other)) << "and the lock excludes all the same";
}

TEST(KeyFile, NamesThatNeverComeBackLeaveFewLockFiles) {
  for (int i = 0; i < 300; ++i) {
    const std::string path = "/run/once-" + std::to_string(i);
    ASSERT_EQ(0, KOPACFileSetKeyValue(path.c_str(), "A", "1", kBare));
  }
  EXPECT_GE(64U, FolderEntries("/run/lock/zarncore").size());
}
