// SPDX-License-Identifier: Apache-2.0
// A change from its wish to its end.
#pragma once

#include <functional>
#include <string>

#include "steps/report.h"

namespace change {

// Told of the step that begins: its number from 1, how many there are, what it does, and the
// seconds since the first began.
using Progress = std::function<void(std::size_t, std::size_t, const std::string&, double)>;

Report Compare(const Json& wish, const Options& options);
Report Check(const Json& wish, const Options& options);
Report Apply(const Json& wish, const Options& options, const Progress& progress);

}  // namespace change
