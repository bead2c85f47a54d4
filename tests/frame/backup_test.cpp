// SPDX-License-Identifier: Apache-2.0
// Copies that a change keeps of a file, and the temporary files of writers that were killed.
#include "frame/os/backup.h"

#include <cerrno>
#include <sys/stat.h>

#include "frame/os/folder.h"
#include "frame/os/rewrite.h"
#include "support/appliance.h"

using namespace test;

namespace {

const std::string kPath = "/etc/kept";

std::string Status() {
  return ReadFile(kPath) + Shell("stat -c '%a %u:%g' " + kPath);
}

TEST(Backup, PutsContentModeAndOwnerBackUnlessItIsRemoved) {
  umask(077);
  WriteFile(kPath, "old\n");
  Shell("chown 12:34 " + kPath + "; chmod 664 " + kPath);
  const frame::Snapshot snapshot(kPath);
  {
    const frame::Backup backup(kPath, ".tmp1");
    ASSERT_TRUE(backup.Made());
    EXPECT_EQ(0664, FileMode(kPath + ".tmp1"));
    WriteFile(kPath, "new\n", 0600);
  }
  EXPECT_EQ("old\n664 12:34\n", Status()) << "also on an exception's way out";
  frame::Backup kept(kPath, ".tmp1");
  WriteFile(kPath, "newer\n", 0600);
  EXPECT_TRUE(kept.Remove());
  EXPECT_TRUE(kept.Restore()) << "nothing left to do";
  EXPECT_EQ("newer\n", ReadFile(kPath));
  EXPECT_FALSE(FileExists(kPath + ".tmp1"));
  ASSERT_TRUE(snapshot.PutBack());
  EXPECT_EQ("old\n664 12:34\n", Status());
  const frame::Snapshot absent("/etc/absent");
  WriteFile("/etc/absent", "");
  EXPECT_TRUE(absent.PutBack());
  EXPECT_FALSE(FileExists("/etc/absent"));
  EXPECT_FALSE(frame::Backup("/etc/absent", ".saved").Made());
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
  const std::string ofAsterisk = frame::PatternOf("/etc/NEW*");
  EXPECT_EQ(Lines{}, frame::AbandonedTemporaries(ofAsterisk + "XXXXXX")) << "a sign of a name";
}

}  // namespace
