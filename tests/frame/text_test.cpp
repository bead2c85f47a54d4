// SPDX-License-Identifier: Apache-2.0
// The frame's operations on text.
#include "frame/base/text.h"

#include <gtest/gtest.h>

namespace {

using frame::NaturalLess;

}  // namespace

TEST(NaturalOrder, ComparesNumbersAsNumbers) {
  const struct {
    const char* fault;
    const char* smaller;
    const char* larger;
  } cases[] = {
      {"digits compared as letters", "eth2", "eth10"},
      {"the order ends behind equal numbers", "eth0.5", "eth0.10"},
      {"a prefix is not smaller", "eth", "eth0"},
      {"a number overflows", "p99999999999999999998", "p99999999999999999999"},
      {"leading zeros make a number longer", "e009", "e10"},
      {"letters and digits mixed", "bond0", "eth0"},
  };
  for (const auto& c : cases) {
    EXPECT_TRUE(NaturalLess(c.smaller, c.larger)) << c.fault;
    EXPECT_FALSE(NaturalLess(c.larger, c.smaller)) << c.fault;
  }
  EXPECT_FALSE(NaturalLess("eth1", "eth1"));
}

TEST(Text, CopiesAreBoundedAndTerminated) {
  char buffer[4] = {'#', '#', '#', '#'};
  frame::CopyText("abcdef", buffer);
  EXPECT_STREQ("abc", buffer);
  frame::CopyText("x", buffer, 1);
  EXPECT_STREQ("", buffer);
  frame::CopyText("xyz", buffer, 0);
  EXPECT_STREQ("", buffer);
  const char full[3] = {'a', 'b', 'c'};
  EXPECT_EQ("abc", frame::FieldText(full)) << "a field without its terminator";
}

TEST(Text, NumbersAreTheWholeTextOrNothing) {
  EXPECT_EQ(-12, frame::ToNumber("-12"));
  for (const char* text : {"", " 1", "1 ", "1x", "0x1", "99999999999999999999"}) {
    EXPECT_EQ(std::nullopt, frame::ToNumber(text)) << text;
  }
}

TEST(Text, NamesThatWouldLeaveTheirFolderAreUnfit) {
  for (const char* name : {"", "a/b", "a b", "a\nb", "a\tb", "\x7f"})
    EXPECT_TRUE(frame::IsUnfitName(name)) << name;
  EXPECT_TRUE(frame::IsUnfitName(nullptr));
  EXPECT_FALSE(frame::IsUnfitName("ovs_bond0.10:1"));
}
