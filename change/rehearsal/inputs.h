// SPDX-License-Identifier: Apache-2.0
// What a plan was made of, so that a plan that is carried out later is still the plan.
#pragma once

#include <optional>
#include <string>

#include "steps/change_state.h"

namespace change {

// The options that a plan depends on.
Json PlannedOptions(const Options& options);

// A short stand-in for each file of the library's and for each part of the kernel's networking:
// another stand-in, another content. Nothing secret can be guessed from it.
Json InputsNow();

// Why this plan is none for the wish, the options and the machine as it is; empty when it holds.
std::string WhyPlanIsStale(const Json& plan, const Json& wish, const Options& options);

}  // namespace change
