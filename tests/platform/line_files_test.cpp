// SPDX-License-Identifier: Apache-2.0
// Files as lines and folders; text, lists, the cipher.
#include <algorithm>
#include <cstring>

#include "fixture.h"

using namespace test;

TEST(LineFile, LinesAreFoundAddedAndRemovedWhole) {
  const char path[] = "/etc/lines";
  char line[16];
  EXPECT_EQ(0, KOPACFileAddLine(path, nullptr, "dhcp-option=vendor:A,1,x", 0));
  EXPECT_EQ(0, KOPACFileAddLine(path, nullptr, "dhcp-option=vendor:A,12,y", 0));
  EXPECT_EQ(0, KOPACFileRemoveKey(path, "dhcp-option=vendor:A,1"));
  EXPECT_EQ("dhcp-option=vendor:A,12,y\n", ReadFile(path)) << "1 is not 12";
  WriteFile(path, "one\ntwo\nthree two");
  EXPECT_EQ(0, KOPACFileAddLine(path, "tw", "between", 0));
  EXPECT_EQ("one\ntwo\nbetween\nthree two\n", ReadFile(path));
  EXPECT_EQ(5, KOPACFileGetLine(path, "thr", line, 6, 2));
  EXPECT_STREQ("three", line);
  EXPECT_EQ(3, KOPACFileGetLine(path, "wo", line, sizeof line, 0x402));
  EXPECT_STREQ("two", line);
  EXPECT_EQ(0, KOPACFileGetLine(path, "wo", line, sizeof line, 2)) << "only at the beginning";
  EXPECT_EQ(0, KOPACFileReplaceSubStr(path, "two", "twotwo"));
  EXPECT_EQ("one\ntwotwo\nbetween\nthree twotwo\n", ReadFile(path));
  List list;
  EXPECT_EQ(0, KOPACFileReadLines(path, list.Out()));
  EXPECT_EQ((Lines{"one", "twotwo", "between", "three twotwo"}), Items(list));
}

TEST(LineFile, TemporariesAreNewAndPrivate) {
  char name[] = "/etc/conf.XXXXXX";
  FILE* const file = KOPACFileTempFileOpen(name);
  ASSERT_NE(nullptr, file);
  std::fclose(file);
  EXPECT_EQ(0600, FileMode(name));
  char other[32];
  EXPECT_EQ(0, KOPACFileITmpName("/etc/hosts", other, sizeof other));
  EXPECT_EQ(0, std::strncmp(other, "/etc/hosts.", 11));
}

TEST(LineFile, FoldersAreListedSorted) {
  for (const char* name : {"b", "a2", "a1", ".a1.unfinished"})
    WriteFile(std::string("/etc/folder/") + name, "");
  List list;
  EXPECT_EQ(2, KOPACFileEnumDir("/etc/folder", "a", list.Out(), 0));
  EXPECT_EQ(3, KOPACFileEnumDir("/etc/folder", nullptr, list.Out(), 1));
  EXPECT_EQ((Lines{"a1", "a2", "a1", "a2", "b"}), Items(list));
}

TEST(Text, TokensKeepTheirPlaces) {
  char empty[] = "a,,b";
  char* save = nullptr;
  EXPECT_STREQ("a", KOPACStrSep(empty, ",", &save));
  EXPECT_STREQ("", KOPACStrSep(nullptr, ",", &save)) << "empty fields are kept";
  EXPECT_STREQ("b", KOPACStrSep(nullptr, ",", &save));
  EXPECT_EQ(nullptr, KOPACStrSep(nullptr, ",", &save));
  char words[] = "zero  one two";
  EXPECT_STREQ("one", KOPACStrTokIndex(words, " ", 1));
}

TEST(Cipher, UndoesItselfAndKeepsTextText) {
  char hidden[64];
  char shown[64];
  const std::string password = "pass word~ 7{}";
  std::memcpy(hidden, password.c_str(), password.size() + 1);
  ASSERT_EQ(0, KOPACCryptBufCrypt(hidden, 31, hidden, 32)) << "in place";
  EXPECT_EQ(Lines(1, "cipher.key"), FolderEntries("/etc/zarncore"));
  EXPECT_EQ(0600, FileMode("/etc/zarncore/cipher.key"));
  EXPECT_TRUE(std::all_of(hidden, hidden + password.size(), [](char c) {
    return c >= ' ' && c <= '~';
  })) << hidden;
  EXPECT_NE(password, hidden);
  ASSERT_EQ(0, KOPACCryptBufCrypt(hidden, 32, shown, 32));
  EXPECT_EQ(password, shown);
  std::memset(hidden, 'x', sizeof hidden);
  ASSERT_EQ(0, KOPACCryptBufCrypt("secret", 6, hidden, 64));
  EXPECT_EQ(std::string(58, '\0'), std::string(hidden + 6, 58)) << "the whole buffer is filled";
  WriteFile("/etc/zarncore/cipher.key", "0123456789abcdefghijklmnopqrstuv", 0600);
  ASSERT_EQ(0, KOPACCryptBufCrypt("secret", 6, hidden, 64));
  EXPECT_STREQ("\"cq41T", hidden) << "what was hidden once must stay readable";
  WriteFile("/etc/zarncore/cipher.key", "short", 0600);
  EXPECT_GT(0, KOPACCryptBufCrypt("secret", 6, hidden, 64)) << "a damaged key is not replaced";
  EXPECT_EQ("4000 cipher", ErrorNow());
  EXPECT_EQ("short", ReadFile("/etc/zarncore/cipher.key"));
}
