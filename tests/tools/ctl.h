// SPDX-License-Identifier: Apache-2.0
// The command line as a test types it; what comes of it stands in the case's transcript.
#pragma once

#include <string_view>

namespace test {

// Types lines at a shell, one after the other. A line is the words of zarnnetctl: it stands in the
// transcript with its exit status, what it changed, and its two outputs behind "1:" and "2:". A
// line behind "$ " is a command of another program ("zarnnetctl" can be one of its words): what it
// prints stands in the transcript and nothing else. A line that begins with '{' is a document,
// which is applied. A '\' at the end of a line takes in the next.
void Type(std::string_view lines);

// Types what the golden text of the test case says that was typed: its lines that begin neither
// with a blank nor with "#", up to their exit status, and those behind "# $ ". A line is added to a
// session there, and what comes of it written with ZARNNET_GOLDEN=write. A document has to end as
// the line before it, which says the same in words.
void TypeSession();

}  // namespace test
