// SPDX-License-Identifier: Apache-2.0
// Texts from files, the kernel and other programs, on their way into a page or a picture.
#pragma once

#include <string>

namespace tool {

// UTF-8 without characters that steer something: U+FFFD in place of what cannot be read, a blank
// in place of a line's end.
std::string Readable(const std::string& text);

// The same for the text or an attribute of HTML and SVG, with its signs written as XML's.
std::string Escaped(const std::string& text);

// The same for a text of several lines, which stay lines.
std::string EscapedLines(const std::string& text);

}  // namespace tool
