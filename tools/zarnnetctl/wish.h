// SPDX-License-Identifier: Apache-2.0
// Changes: a verb says what is wanted, in the words of the state document, and the library of
// changes makes the machine so, or tells why not and puts everything back.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "output.h"
#include "waiting.h"

namespace tool {

// Makes the machine as the wish says, and starts anew what these paths name. Tells what came of it,
// and sets the exit status.
void MakeChange(Context& context, const Json& wish, const std::vector<std::string>& restart = {});

// The same for a wish as it was written, with options that only some changes have.
void ApplyWish(Context& context, const std::string& wish, const Json& options);

// Tells what came of a change, and sets the exit status.
void TellReport(Context& context, const Report& report);

// Options that all changes have, as the library takes them.
Json OptionsOf(const Context& context);

// Sections of the state document, as it is configured; without them all.
Json ReadState(const std::vector<std::string>& sections);
// The same of what the kernel has and what runs.
Json ReadLiveState(const std::vector<std::string>& sections);

// A part of it, null where there is none.
Json PartOf(const Json& state, const std::string& path);

// The texts of a list, none of anything else.
std::vector<std::string> TextsOf(const Json& list);

}  // namespace tool
