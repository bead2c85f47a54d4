// Copies that a change keeps of a file, and the temporary files of writers that were killed.
#include "frame/os/backup.h"

#include <cerrno>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "frame/os/rewrite.h"
#include "support/appliance.h"

using namespace test;

namespace {

const std::string kPath = "/etc/kept";

std::string Owner(const std::string& path) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  return std::to_string(status.st_uid) + ":" + std::to_string(status.st_gid);
}

TEST(Backup, PutsContentModeAndOwnerBack) {
  umask(077);
  WriteFile(kPath, "old\n", 0664);
  ASSERT_EQ(0, chown(kPath.c_str(), 12, 34));
  ASSERT_EQ(0, chmod(kPath.c_str(), 0664));
  std::optional<frame::Snapshot> snapshot(kPath);
  {
    const frame::Backup backup(kPath, ".tmp1");
    ASSERT_TRUE(backup.Made());
    RemoveFile(kPath);
    WriteFile(kPath, "new\n", 0600);
  }
  EXPECT_EQ("old\n", ReadFile(kPath));
  EXPECT_EQ(0664, FileMode(kPath));
  EXPECT_EQ("12:34", Owner(kPath));
  RemoveFile(kPath);
  WriteFile(kPath, "newer\n", 0600);
  ASSERT_TRUE(snapshot->PutBack());
  EXPECT_EQ("old\n", ReadFile(kPath));
  EXPECT_EQ(0664, FileMode(kPath));
  EXPECT_EQ("12:34", Owner(kPath));
  EXPECT_FALSE(FileExists(kPath + ".tmp1"));
  const frame::Snapshot absent("/etc/absent");
  WriteFile("/etc/absent", "");
  EXPECT_TRUE(absent.PutBack());
  EXPECT_FALSE(FileExists("/etc/absent"));
}

TEST(Backup, ASecondOneInTheSameSecondHasACopyOfItsOwn) {
  WriteFile(kPath, "first\n");
  frame::Backup first(kPath, ".tmp1");
  WriteFile(kPath, "second\n");
  frame::Backup second(kPath, ".tmp1");
  EXPECT_NE(first.CopyName(), second.CopyName());
  EXPECT_TRUE(second.Remove());
  RecordTool("/bin/cp", 1);
  { const frame::Backup third(kPath, ".tmp1"); }
  EXPECT_TRUE(first.Restore());
  EXPECT_EQ("first\n", ReadFile(kPath));
}

TEST(Backup, OneThatCannotBeMadeSaysWhyAndIsNeverPutBack) {
  WriteFile(kPath, "text\n");
  for (const auto& [mode, reason] : {std::pair{0644, EACCES}, std::pair{0755, EIO}}) {
    WriteFile("/bin/cp", "#!/bin/sh\n", mode);  // says yes and copies nothing
    chmod("/bin/cp", static_cast<mode_t>(mode));
    const frame::Backup backup(kPath, ".tmp1");
    EXPECT_EQ(reason, errno);
    EXPECT_FALSE(backup.Made());
    EXPECT_FALSE(FileExists(backup.CopyName()));
  }
  EXPECT_EQ("text\n", ReadFile(kPath));
}

TEST(Rewrite, OnlyAWriterThatIsGoneHasAbandonedItsFile) {
  const std::string nameTemplate = "/etc/NEW_XXXXXX";
  WriteFile("/etc/NEW_a1B2c3", "half");
  WriteFile("/etc/NEW_longer12", "somebody's");
  frame::Rewrite living(kPath, nameTemplate);
  ASSERT_TRUE(living.IsOpen() && living.Fill("text\n"));
  EXPECT_EQ(Lines{"/etc/NEW_a1B2c3"}, frame::AbandonedTemporaries(nameTemplate));
  EXPECT_TRUE(living.TakeEffect());
}

}  // namespace
