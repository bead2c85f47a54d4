// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <zarnnetchange/change.h>

#include "wish.h"

namespace test {

nlohmann::json State(const std::string& options) {
  char* text = nullptr;
  EXPECT_EQ(ZARNNetChangeRead(options.c_str(), &text), ZARNNETCHANGE_DONE);
  nlohmann::json state = nlohmann::json::parse(text != nullptr ? text : "{}");
  ZARNNetChangeFree(text);
  return state;
}

}  // namespace test
