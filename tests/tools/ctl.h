// The command line as a test types it; what comes of it stands in the case's transcript.
#pragma once

#include <string_view>

namespace test {

// Types lines at a shell, one after the other. A line is the words of zarnnetctl: it stands in the
// transcript with its exit status, what it changed, and its two outputs behind "1:" and "2:". A
// line behind "$ " is a command of another program ("zarnnetctl" can be one of its words): what it
// prints stands in the transcript and nothing else. A '\' at the end of a line takes in the next.
void Type(std::string_view lines);

}  // namespace test
