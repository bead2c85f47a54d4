// SPDX-License-Identifier: Apache-2.0
// What the table of verbs says of itself: help, synopsis, completions, and what a wrong word may
// have been meant to be. Nothing of this is written a second time by hand.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

// What stands where a value's shape is told: "{a,b}" for one of these words, and the three below
// for what the machine has. Completion reads it back.
inline constexpr char kInterfaceShape[] = "IFNAME";
inline constexpr char kFileShape[] = "FILE";
inline constexpr char kChangeShape[] = "CHANGE";

// The options that every change has; the help tells them apart, the synopsis names them once.
inline constexpr char kChangeGroup[] = "Options of every change";

// The help of a verb, of a group or of the whole.
std::string HelpOf(const CLI::App& app);

// The SYNOPSIS of the manual page, in mdoc.
std::string Synopsis(const CLI::App& app);

// What may stand in place of the last of the words, one a line, a tab before its description;
// ":files" where the shell is to offer files.
std::string Completions(const CLI::App& app, const std::vector<std::string>& words);

// "zarnnetctl bond set".
std::string PathOf(const CLI::App& app);

// The verb or group that the command line named last.
const CLI::App* ChosenOf(const CLI::App& app);

// What is wrong with the words that nothing took; empty when all were taken.
std::string ProblemWith(const CLI::App& chosen, const std::vector<std::string>& extras);

// The operands and options of a verb as they were given: "IFNAME 'eth9', ADDRESS 'x'".
std::string GivenTo(const CLI::App& verb);

}  // namespace tool
