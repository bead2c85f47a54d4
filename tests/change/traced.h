// SPDX-License-Identifier: Apache-2.0
// The programs that a call runs, as the kernel sees them.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace test {

struct Call {
  std::string within;  // the start script, when it made the call
  std::string words;   // the program's name and its arguments
};

// Makes the call in a child and follows all its processes. Of the appliance's programs that a plan
// answers only the call itself counts.
std::vector<Call> TraceCalls(const std::function<int()>& call, int* result);

}  // namespace test
