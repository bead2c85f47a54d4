// SPDX-License-Identifier: Apache-2.0
// What is told of a change.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include <zarnnetchange/change.h>

#include "steps/change_state.h"

namespace change {

struct StepReport {
  Step step;
  enum class State { kPlanned, kDone, kFailed } state = State::kPlanned;
  unsigned code = 0;   // of a failure
  std::string reason;  // in words
  std::string place;   // the library's source and line
  std::string values;  // that it sets
};

struct Report {
  int result = ZARNNETCHANGE_DONE;
  std::string reason;
  std::vector<Finding> findings;
  std::vector<StepReport> steps;
  std::vector<Difference> differences;
  std::vector<Remark> awaited;
  std::vector<std::string> repaired;
  std::vector<std::string> lost;
  std::optional<bool> restored;
  std::vector<std::string> problems;
  Json holder;
  long number = 0;        // of the change that it is about, or that was put back
  long undoes = 0;        // the change before which the machine is again
  Json confirm;           // "number", "seconds", "until" of what waits
  std::string recovered;  // what was put back before, a sentence
};

Json ToJson(const Report& report);

}  // namespace change
