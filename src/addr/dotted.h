// IPv4 addresses as four numbers, and as one with the first part in the top byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace addr {

// What the splitter of dotted text looks at, terminator included; text beyond it is not judged.
inline constexpr std::size_t kDottedSize = 32;

// Takes a number off the front of *text: decimal, octal after a leading 0 or hexadecimal after 0x.
// Nothing when the text does not begin with a digit: a blank, a sign or a newline is never part of
// an address.
std::optional<unsigned> TakeNumber(const char** text);

std::uint32_t ToValue(const unsigned (&parts)[4]);
std::string DottedText(std::uint32_t value);

}  // namespace addr
