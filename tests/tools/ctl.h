// The command line as a test runs it.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

#include "support/appliance.h"

namespace test {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

// Runs zarnnetctl as a shell would: words may be quoted, a redirection of the output may end the
// line.
inline Outcome Ctl(const std::string& words) {
  const std::string status =
      Shell("{ " ZARNNETCTL " " + words + "; } >/tmp/ctl.out 2>/tmp/ctl.err; echo $?");
  return {std::stoi(status), ReadFile("/tmp/ctl.out"), ReadFile("/tmp/ctl.err")};
}

// The payload of a verb that is to succeed.
inline nlohmann::json Payload(const std::string& words, const std::string& name) {
  const Outcome outcome = Ctl(words + " --json");
  EXPECT_EQ(0, outcome.status) << words << ": " << outcome.err;
  EXPECT_EQ("", outcome.err) << words;
  const auto whole = nlohmann::json::parse(outcome.out, nullptr, false);
  EXPECT_EQ(2U, whole.size()) << outcome.out;
  EXPECT_EQ(nlohmann::json(1), whole.value("schema", nlohmann::json())) << outcome.out;
  return whole.value(name, nlohmann::json());
}

// The error of a verb that is to fail with JSON asked for, and to print nothing else.
inline nlohmann::json Error(const std::string& words, int status) {
  const Outcome outcome = Ctl(words + " --json");
  EXPECT_EQ(status, outcome.status) << words;
  EXPECT_EQ("", outcome.out) << words;
  const auto whole = nlohmann::json::parse(outcome.err, nullptr, false);
  EXPECT_EQ(nlohmann::json(1), whole.value("schema", nlohmann::json())) << outcome.err;
  return whole.value("error", nlohmann::json::object());
}

inline void ExpectDone(const std::string& words) {
  const Outcome outcome = Ctl(words);
  EXPECT_EQ(0, outcome.status) << words;
  EXPECT_EQ("", outcome.out + outcome.err) << words;
}

inline void ExpectFailure(const std::string& words, const std::string& message) {
  const Outcome outcome = Ctl(words);
  EXPECT_EQ(kFailed, outcome.status) << words;
  EXPECT_EQ("", outcome.out) << words;
  EXPECT_EQ("zarnnetctl: " + message + "\n", outcome.err);
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace test
