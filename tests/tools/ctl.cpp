// SPDX-License-Identifier: Apache-2.0
#include "ctl.h"

#include <sstream>
#include <unistd.h>

#include "support/transcript.h"

namespace test {
namespace {

// Where the transcript does not look.
constexpr char kOut[] = "/var/log/ctl.out";
constexpr char kErr[] = "/var/log/ctl.err";
constexpr char kDocument[] = "/var/log/ctl.json";

void SayEach(const std::string& stream, const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    Say(stream + line + (lines.eof() ? " \\" : ""));
}

// Link-local addresses come a moment after a port is up; the tool shows them.
class Settled : public ::testing::Environment {
  void SetUp() override {
    ASSERT_EQ(0, ::symlink(ZARNNETCTL, "/usr/sbin/zarnnetctl"));
    Shell("for file in /proc/sys/net/ipv6/conf/*/addr_gen_mode; do echo 1 >$file; done");
  }
};

const auto* const settled = ::testing::AddGlobalTestEnvironment(new Settled);

// The exit status.
long TypeOne(const std::string& line) {
  if (line.starts_with("$ ")) {
    transcript::Begin(ZARNNET_GOLDEN_FOLDER);
    Say(line);
    SayEach("", Shell(line.substr(2)));
    return 0;
  }
  std::string words = line;
  if (line.starts_with('{')) {
    WriteFile(kDocument, line);
    words = std::string("apply ") + kDocument;
  }
  const std::string command = "{ zarnnetctl " + words + "; } >" + kOut + " 2>" + kErr + "; echo $?";
  const long status = Tell(line, [&] { return std::stol(Shell(command)); });
  SayEach("1: ", ReadFile(kOut));
  SayEach("2: ", ReadFile(kErr));
  return status;
}

}  // namespace

void Type(std::string_view lines) {
  std::istringstream script{std::string(lines)};
  std::string whole;
  for (std::string line; std::getline(script, line); whole.clear()) {
    whole = line;
    while (whole.ends_with('\\') && std::getline(script, line))
      whole.replace(whole.size() - 1, 1, line);
    if (!whole.empty()) TypeOne(whole);
  }
}

void TypeSession() {
  const auto* const test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::istringstream session(ReadFile(std::string(ZARNNET_GOLDEN_FOLDER "/") +
                                      test->test_suite_name() + "." + test->name() + ".txt"));
  bool any = false;
  long before = 0;
  for (std::string line; std::getline(session, line);) {
    const bool isOfOthers = line.starts_with("# $ ");
    if (!isOfOthers && (line.starts_with(' ') || line.starts_with('#'))) continue;
    any = true;
    const long status = TypeOne(isOfOthers ? line.substr(2) : line.substr(0, line.rfind(" = ")));
    if (line.starts_with('{')) {
      EXPECT_EQ(before, status) << line;
    }
    before = status;
  }
  EXPECT_TRUE(any) << "a session without a typed line";
}

}  // namespace test
