// SPDX-License-Identifier: Apache-2.0
// Memory that is refused.
#pragma once

namespace test {

// From the given one on allocations of this thread are refused: that one alone, or all.
void RefuseMemory(long from, bool all);
// Ends that. Was any refused?
bool StopRefusing();
// What a test needs itself is not refused while it lives.
class MemoryForTheTest {
 public:
  MemoryForTheTest();
  ~MemoryForTheTest();
  MemoryForTheTest(const MemoryForTheTest&) = delete;
  MemoryForTheTest& operator=(const MemoryForTheTest&) = delete;

 private:
  long left_;
};

}  // namespace test
