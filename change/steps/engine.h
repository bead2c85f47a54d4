// SPDX-License-Identifier: Apache-2.0
// A change from its wish to its end.
#pragma once

#include <functional>
#include <string>

#include "record/generation.h"
#include "steps/report.h"

namespace change {

// Told of the step that begins: its number from 1, how many there are, what it does, and the
// seconds since the first began.
using Progress = std::function<void(std::size_t, std::size_t, const std::string&, double)>;

Report Compare(const Json& wish, const Options& options);
Report Check(const Json& wish, const Options& options);
// Has what follows happen in a copy of the machine; false, with a sentence, when there is none.
using EnterCopy = std::function<bool(const Generation&, std::string*)>;

// The same as Apply(), in the copy: without locks, and for whoever may read.
Report Rehearse(const Json& wish, const Options& options, const EnterCopy& enter);

// Takes the report's steps in the copy, and compares nothing.
Report RehearseSteps(Report report, const EnterCopy& enter);

Report Apply(const Json& wish, const Options& options, const Progress& progress);

}  // namespace change
