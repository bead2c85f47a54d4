// SPDX-License-Identifier: Apache-2.0
// Texts as the dial-in's scripts and the secrets file have them: quoted as one word of a shell.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pppoe {

// Puts a text in single quotes. The result has at most 511 characters: what does not fit is cut
// off.
std::string Quoted(std::string_view text);

// The text that a quoted word stands for, as a shell reads it; ends at the first blank outside
// quotes. A quote that is not closed ends with the text.
std::string Unquoted(std::string_view word);

// The columns of a line of the secrets file, before and behind the first "*" outside quotes. Both
// columns are still quoted.
struct SecretsLine {
  std::string_view account;
  std::string_view secret;
};
std::optional<SecretsLine> SplitColumns(std::string_view line);

}  // namespace pppoe
