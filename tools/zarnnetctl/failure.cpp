// The reasons behind the library's codes, in words, in this one place.
#include "failure.h"

#include <array>
#include <cstdio>

#include <zarncore/zarncore.h>

namespace tool {
namespace {

struct Entry {
  Code code;
  const char* reason;
};

constexpr std::array<Entry, 17> kReasons{{
    {0x0100, "a table of fixed size is full"},
    {0x0200, "out of memory"},
    {kLockHeld, "another process holds the network configuration"},
    {kCannotOpen, "a file or socket could not be opened"},
    {0x0A00, "a file could not be read to its end"},
    {0x0B00, "a file could not be written"},
    {kOutOfRange, "an argument is missing or out of range"},
    {0x0E00, "the host name is empty or too long"},
    {kMalformedAddress, "not a well-formed IPv4 address or netmask"},
    {0x2800, "a new file could not take the place of the old one"},
    {0x2A00, "a program that makes the change failed"},
    {0x3400, "the kernel did not answer the VLAN query"},
    {0x4000, "a file of the kernel reads otherwise than expected"},
    {kRefused, "the system refused the request"},
    {0xBB00, "it exists already"},
    {kNotFound, "there is no such interface, or it is of another kind"},
    {0xBD00, "the bond has its most slaves already"},
}};

}  // namespace

std::string Failure::CodeText() const {
  if (!code_) return {};
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "0x%04X", *code_);
  return text.data();
}

std::string ReasonOf(Code code) {
  for (const Entry& entry : kReasons) {
    if (entry.code == code) return entry.reason;
  }
  return "unknown code";
}

void ForgetErrors() {
  KOPACErrSetEx(0, "", 0);
}

void Fail(const std::string& what) {
  const Code code = KOPACErrGet();
  // Some steps, such as a program of the system that fails, are told to the log alone.
  if (code == 0) throw Failure(what, std::nullopt, "no code was recorded; see the system log");
  throw Failure(what, code, ReasonOf(code));
}

}  // namespace tool
