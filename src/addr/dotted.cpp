// IPv4 addresses as four numbers, and as one with the first part in the top byte.
#include "addr/dotted.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <limits>

#include "frame/os/kernel.h"

namespace addr {

std::optional<unsigned> TakeNumber(const char** text) {
  if (**text < '0' || **text > '9') return std::nullopt;
  char* end = nullptr;
  const unsigned long number = std::strtoul(*text, &end, 0);
  *text = end;
  // Cut off rather than wrapped: 4294967297 must not pass for 1.
  constexpr unsigned long kMost = std::numeric_limits<unsigned>::max();
  return static_cast<unsigned>(std::min(number, kMost));
}

std::uint32_t ToValue(const unsigned (&parts)[4]) {
  return parts[0] << 24 | parts[1] << 16 | parts[2] << 8 | parts[3];
}

std::string DottedText(std::uint32_t value) {
  return frame::DottedText(in_addr{htonl(value)});
}

}  // namespace addr
