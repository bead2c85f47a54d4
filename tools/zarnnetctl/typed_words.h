// SPDX-License-Identifier: Apache-2.0
// Sentences of the library of changes, which speak of the state document, in the words of a verb.
#pragma once

#include <string>

namespace tool {

// The operand or option in which a verb takes what a path of the document names, such as "ADDRESS";
// the path itself where no verb takes it.
std::string TypedWordOf(const std::string& path);

// A sentence with these paths, each in front of a ':', and with what it says of the document's
// fields, put so.
std::string InTypedWords(std::string sentence);

}  // namespace tool
