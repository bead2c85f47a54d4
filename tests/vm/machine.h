// What the scenarios on the stock kernel ask of programs that are not this library's.
#pragma once

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <string>

#include "support/appliance.h"

namespace test {

// An emulated machine is slow, and drivers tell of carrier and partners when they get to it.
inline bool Within(int seconds, const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) return false;
    ::poll(nullptr, 0, 50);
  }
  return true;
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// A line of set-up, which has to succeed as a whole.
inline void Do(const std::string& commands) {
  const std::string output = Shell("(set -e; " + commands + ") && echo done");
  EXPECT_TRUE(output.ends_with("done\n")) << commands << "\n" << output;
}

// What "ip -j -d ARGUMENTS" says.
inline nlohmann::json Ip(const std::string& arguments) {
  const auto answer = nlohmann::json::parse(Shell("ip -j -d " + arguments), nullptr, false);
  if (answer.is_discarded()) ADD_FAILURE() << "ip " << arguments;
  return answer.is_array() ? answer : nlohmann::json::array();
}

inline Lines Words(const std::string& text) {
  std::istringstream stream(text);
  return Lines(std::istream_iterator<std::string>(stream), {});
}

}  // namespace test
