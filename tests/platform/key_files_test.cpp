// Settings files: what an edit keeps, what it refuses, and what a crash or a second writer can do
// to it.
#include <cerrno>
#include <cstdlib>
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

struct stat StatusOf(const char* path) {
  struct stat status {};
  ::lstat(path, &status);
  return status;
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
  const struct stat before = StatusOf(kFile);
  EXPECT_EQ(0, Set("A", "one"));
  EXPECT_EQ("# top\nA=one\n\nB=2\n=x\nnoise\r\nC=4", ReadFile(kFile)) << "in place, and once";
  EXPECT_EQ(0, Set("D", "100%s", "%s=\"%s\"\n"));
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B"));
  EXPECT_EQ("# top\nA=one\n\n=x\nnoise\r\nC=4\nD=\"100%s\"\n", ReadFile(kFile));
  struct stat after = StatusOf(kFile);
  EXPECT_EQ(before.st_mode, after.st_mode);
  EXPECT_EQ(before.st_uid, after.st_uid);
  EXPECT_EQ(before.st_gid, after.st_gid);
  EXPECT_EQ(0, KOPACFileRemoveKey(kFile, "B")) << "an absent key is gone already";
  EXPECT_EQ(0, Set("A", "one"));
  EXPECT_EQ(after.st_ino, StatusOf(kFile).st_ino) << "what changes nothing writes nothing";
  RemoveFile(kFile);
  EXPECT_EQ(0, Set("N", "new"));
  EXPECT_EQ(0, KOPACFileTouch("/etc/touched"));
  EXPECT_EQ("N=new\n", ReadFile(kFile));
  EXPECT_EQ(0644, FileMode(kFile));
  EXPECT_EQ(0644, FileMode("/etc/touched"));
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
  EXPECT_TRUE(S_ISLNK(StatusOf(kFile).st_mode));
  EXPECT_EQ(0, KOPACFileSetKeyValue("/run/link/made", "A", "1", kBare)) << "a folder behind a link";
  EXPECT_EQ("A=1\n", ReadFile("/etc/made"));
}

TEST(KeyFile, AFullLockFolderStopsNobody) {
  ::mkdir("/run/lock/zarncore", 0755);
  MountEmpty("/run/lock/zarncore", "16k");
  FillDisk("/run/lock/zarncore");
  EXPECT_EQ(0, Set("A", "2"));
  EXPECT_EQ(0, KOPACFileLock(0x106, 1));
  const pid_t other = Start([] { return KOPACFileLock(0x106, 0) == 0 ? 1 : 0; });
  EXPECT_EQ(0, ExitStatusOf(other)) << "and the lock excludes all the same";
}

TEST(KeyFile, TwoWritersLoseNoEdit) {
  constexpr int kKeys = 60;
  const auto writer = [](const std::string& prefix) {
    return Start([=] {
      int failures = 0;
      for (int i = 0; i < kKeys; ++i)
        failures += Set(prefix + std::to_string(i), "v") != 0;
      return failures;
    });
  };
  const pid_t first = writer("A");
  const pid_t second = writer("B");
  EXPECT_EQ(0, ExitStatusOf(first));
  EXPECT_EQ(0, ExitStatusOf(second));
  const std::string text = "\n" + ReadFile(kFile);
  for (int i = 0; i < kKeys; ++i)
    for (const char* prefix : {"\nA", "\nB"})
      EXPECT_NE(std::string::npos, text.find(prefix + std::to_string(i) + "=v\n")) << prefix << i;
}

TEST(KeyFile, AKilledWriterLeavesOldOrNewAndNoLockAndNoTrace) {
  const std::string tail(200000, '#');
  const auto isWhole = [&](const std::string& text) {
    return text == "A=" + std::to_string(std::atoi(text.c_str() + 2)) + "\n" + tail + "\n";
  };
  const std::string kept[] = {"/etc/.settings.backup", "/etc/.settings2.zarncore-new"};
  for (const std::string& path : kept)
    WriteFile(path, "somebody's");
  WriteFile("/etc/.settings.zarncore-new", "stale");
  WriteFile(kFile, "A=0\n" + tail + "\n");
  const Lines before = FolderEntries("/etc");
  for (int round = 0; round < 30; ++round) {
    Gate started;
    const pid_t writer = Start([&] {
      started.Open();
      for (int i = 1;; ++i)
        Set("A", std::to_string(i));
      return 0;
    });
    ASSERT_TRUE(started.Wait());
    for (int i = 0; i <= round % 5; ++i)
      ASSERT_TRUE(isWhole(ReadFile(kFile))) << "a reader saw a part, round " << round;
    KillAndReap(writer);
    ASSERT_TRUE(isWhole(ReadFile(kFile))) << "round " << round;
  }
  List names;
  EXPECT_EQ(1, KOPACFileEnumDir("/etc", "settings", names.Out(), 0))
      << "what was not finished is not taken for a file of its kind";
  EXPECT_EQ(0, Set("A", "end")) << "the lock died with its holder";
  Lines expected = before;
  std::erase(expected, ".settings.zarncore-new");
  EXPECT_EQ(expected, FolderEntries("/etc")) << "and what killed writers left is gone";
}

TEST(KeyFile, NamesThatNeverComeBackLeaveFewLockFiles) {
  for (int i = 0; i < 300; ++i) {
    const std::string path = "/run/once-" + std::to_string(i);
    ASSERT_EQ(0, KOPACFileSetKeyValue(path.c_str(), "A", "1", kBare));
  }
  EXPECT_GE(64U, FolderEntries("/run/lock/zarncore").size());
}
