// Settings files: what an edit keeps, what it refuses, and what a crash or a second writer can do
// to it.
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <zarncore/zarncore.h>

#include "frame/os/containers.h"
#include "support/appliance.h"
#include "support/children.h"

using namespace test;

namespace {

const char kFile[] = "/etc/settings";
const char kBare[] = "%s=%s\n";

std::string Get(const char* key, int* length = nullptr) {
  char value[64] = "before";
  const int result = KOPACFileGetKeyValue(kFile, key, value, sizeof value, 0);
  if (length != nullptr) *length = result;
  return value;
}

int Set(const char* key, const char* value, const char* format = kBare) {
  return KOPACFileSetKeyValue(kFile, key, value, format);
}

struct stat StatusOf(const char* path) {
  struct stat status {};
  ::stat(path, &status);
  return status;
}

}  // namespace

TEST(KeyFile, ReadingFindsTheKeyAndNothingElse) {
  WriteFile(kFile,
            "#A=0\nXA=1\nA =2\nAB=3\n A=4\nNOTE=A=5\nA=first\r\nA=second\nQ=\"two "
            "words\"\nH=\"half\nE=\nL=last");
  int length = 0;
  EXPECT_EQ("first", Get("A", &length));
  EXPECT_EQ(5, length);
  EXPECT_EQ("two words", Get("Q"));
  EXPECT_EQ("\"half", Get("H")) << "one quote alone is part of the value";
  EXPECT_EQ("last", Get("L"));
  EXPECT_EQ("", Get("E", &length));
  EXPECT_EQ(0, length);
  EXPECT_EQ("", Get("a", &length)) << "the case counts";
  EXPECT_EQ(0, length);
  char cut[4];
  EXPECT_EQ(3, KOPACFileGetKeyValue(kFile, "A", cut, sizeof cut, 0));
  EXPECT_STREQ("fir", cut);
  EXPECT_GT(0, KOPACFileGetKeyValue("/etc/nowhere", "A", cut, sizeof cut, 0));
  EXPECT_EQ(1, KOPACFileCheckKeyValue(kFile, "Q", "two words", 0));
  EXPECT_EQ(0, KOPACFileCheckKeyValue(kFile, "Q", "two", 0));
  EXPECT_GT(0, KOPACFileCheckKeyValue("/etc/nowhere", "Q", "two", 0));
}

TEST(KeyFile, AnEditKeepsWhatItDoesNotKnow) {
  WriteFile(kFile, "# top\nA=1\n\nB=2\nA=3\n=x\nnoise\r\nC=4", 0640);
  // Where another user runs the tests only one owner exists.
  ASSERT_TRUE(::chown(kFile, 12, 34) == 0 || errno == EINVAL);
  const struct stat before = StatusOf(kFile);
  EXPECT_EQ(0, Set("A", "one"));
  EXPECT_EQ("# top\nA=one\n\nB=2\n=x\nnoise\r\nC=4", ReadFile(kFile)) << "in place, and once";
  EXPECT_EQ(0, Set("D", "100%s", "%s=\"%s\"\n"));
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B"));
  EXPECT_EQ("# top\nA=one\n\n=x\nnoise\r\nC=4\nD=\"100%s\"\n", ReadFile(kFile));
  EXPECT_EQ(0640U, StatusOf(kFile).st_mode & 07777U);
  EXPECT_EQ(before.st_uid, StatusOf(kFile).st_uid);
  EXPECT_EQ(before.st_gid, StatusOf(kFile).st_gid);
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B")) << "an absent key is gone already";
  EXPECT_EQ(-1, KOPACFileRemoveKey("/etc/nowhere", "B"));
  RemoveFile(kFile);
  EXPECT_EQ(0, Set("N", "new"));
  EXPECT_EQ("N=new\n", ReadFile(kFile));
  EXPECT_EQ(0644, FileMode(kFile));
}

TEST(KeyFile, ManyKeysAreOneRewriteInTheCallersOrder) {
  WriteFile(kFile, "KEEP=1\nOLD=2\nX=3\n");
  frame::StringHash set;
  frame::StringHash drop;
  for (const char* key : {"Z", "X", "M", "A"})
    set.Set(key, key);
  drop.Set("OLD", "");
  drop.Set("X", "");
  EXPECT_EQ(0, KOPACFileSetKeys(kFile, set.Get(), drop.Get(), kBare));
  EXPECT_EQ("KEEP=1\nX=X\nZ=Z\nM=M\nA=A\n", ReadFile(kFile));
  EXPECT_EQ(0, KOPACFileSetKeys(kFile, set.Get(), nullptr, nullptr)) << "no drop hash, bare form";
}

TEST(KeyFile, NoTextAddsALine) {
  WriteFile(kFile, "A=1\n");
  const ino_t before = StatusOf(kFile).st_ino;
  EXPECT_EQ(-1, Set("A", "1\nROOT=yes"));
  EXPECT_EQ(-1, Set("A", "1\rROOT=yes"));
  EXPECT_EQ(-1, Set("A\nB", "1"));
  EXPECT_EQ(-1, Set("A=B", "1"));
  EXPECT_EQ(-1, Set("", "1"));
  EXPECT_EQ(-1, Set(nullptr, "1"));
  EXPECT_EQ(-1, Set("A", nullptr));
  EXPECT_EQ(-1, Set("A", "2", "%n%s\n")) << "a format without both places";
  EXPECT_EQ(-1, KOPACFileAddLine(kFile, nullptr, "x\ny", 0));
  EXPECT_EQ("A=1\n", ReadFile(kFile));
  EXPECT_EQ(0, Set("A", "1"));
  EXPECT_EQ(before, StatusOf(kFile).st_ino) << "an edit that changes nothing writes nothing";
}

TEST(KeyFile, ALinkStaysALink) {
  WriteFile("/etc/target", "A=1\n");
  ASSERT_EQ(0, ::symlink("/etc/target", kFile));
  EXPECT_EQ(0, Set("A", "2"));
  EXPECT_EQ("A=2\n", ReadFile("/etc/target"));
  struct stat status {};
  ASSERT_EQ(0, ::lstat(kFile, &status));
  EXPECT_TRUE(S_ISLNK(status.st_mode));
  ASSERT_EQ(0, ::symlink("/etc", "/run/link"));
  EXPECT_EQ(0, KOPACFileSetKeyValue("/run/link/made", "A", "1", kBare)) << "a folder behind a link";
  EXPECT_EQ("A=1\n", ReadFile("/etc/made"));
}

TEST(KeyFile, AFullDiskKeepsTheOldFileAndNothingElse) {
  ::mkdir("/etc/small", 0755);
  MountEmpty("/etc/small", "16k");
  const std::string old = "A=1\n" + std::string(4000, '#') + "\n";
  WriteFile("/etc/small/conf", old);
  FillDisk("/etc/small");
  EXPECT_EQ(-1, KOPACFileSetKeyValue("/etc/small/conf", "B", "2", kBare));
  EXPECT_EQ(old, ReadFile("/etc/small/conf"));
  EXPECT_EQ((Lines{"conf", "filler"}), FolderEntries("/etc/small"));
}

TEST(KeyFile, AFullLockFolderStopsNobody) {
  ::mkdir("/run/lock/zarncore", 0755);
  MountEmpty("/run/lock/zarncore", "16k");
  FillDisk("/run/lock/zarncore");
  WriteFile(kFile, "A=1\n");
  EXPECT_EQ(0, Set("A", "2"));
  EXPECT_EQ(0, KOPACFileLock(0x106, 1));
  const pid_t other = Start([] { return KOPACFileLock(0x106, 0) == 0 ? 1 : 0; });
  EXPECT_EQ(0, ExitStatusOf(other)) << "and the lock excludes all the same";
  EXPECT_EQ(0, KOPACFileUnlock(0x100));
}

TEST(KeyFile, TwoWritersLoseNoEdit) {
  WriteFile(kFile, "TOP=1\n");
  constexpr int kKeys = 60;
  const auto writer = [](const char* prefix) {
    return Start([=] {
      int failures = 0;
      for (int i = 0; i < kKeys; ++i)
        failures += Set((prefix + std::to_string(i)).c_str(), "v") != 0;
      return failures;
    });
  };
  const pid_t first = writer("A");
  const pid_t second = writer("B");
  EXPECT_EQ(0, ExitStatusOf(first));
  EXPECT_EQ(0, ExitStatusOf(second));
  int missing = 0;
  for (int i = 0; i < kKeys; ++i) {
    missing += Get(("A" + std::to_string(i)).c_str()) != "v";
    missing += Get(("B" + std::to_string(i)).c_str()) != "v";
  }
  EXPECT_EQ(0, missing);
}

TEST(KeyFile, AKilledWriterLeavesOldOrNewAndNoLock) {
  const std::string tail(200000, '#');
  const auto text = [&](const std::string& value) { return "A=" + value + "\n" + tail + "\n"; };
  WriteFile(kFile, text("0"));
  for (int round = 0; round < 40; ++round) {
    Gate started;
    const pid_t writer = Start([&] {
      started.Open();
      for (int i = 1;; ++i)
        Set("A", std::to_string(i).c_str());
      return 0;
    });
    ASSERT_TRUE(started.Wait());
    ::poll(nullptr, 0, round % 5);
    KillAndReap(writer);
    ASSERT_EQ(text(Get("A")), ReadFile(kFile)) << "round " << round;
  }
  EXPECT_EQ(0, Set("A", "end")) << "the lock died with its holder";
  frame::StringList names(1);
  KOPACFileEnumDir("/etc", "settings", names.Out(), 0);
  EXPECT_EQ(Lines(1, "settings"), Items(names.Get()))
      << "what was not finished is not taken for a file of its kind";
}

TEST(KeyFile, NamesThatNeverComeBackLeaveFewLockFiles) {
  for (int i = 0; i < 300; ++i) {
    const std::string path = "/etc/once-" + std::to_string(i);
    ASSERT_EQ(0, KOPACFileSetKeyValue(path.c_str(), "A", "1", kBare));
    RemoveFile(path);
  }
  EXPECT_GE(64U, FolderEntries("/run/lock/zarncore").size());
}

TEST(KeyFile, AReaderNeverSeesHalfAFile) {
  const std::string tail(100000, '#');
  WriteFile(kFile, "A=0\n" + tail + "\n");
  const pid_t writer = Start([] {
    for (int i = 0; i < 300; ++i)
      Set("A", std::to_string(i % 10).c_str());
    return 0;
  });
  int torn = 0;
  while (::waitpid(writer, nullptr, WNOHANG) == 0)
    torn += ReadFile(kFile).size() != tail.size() + 5;
  EXPECT_EQ(0, torn);
}
