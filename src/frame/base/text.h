// SPDX-License-Identifier: Apache-2.0
// Small operations on text: argument checks, bounded copies, formatting, splitting, numbers.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace frame {

inline bool IsEmpty(const char* text) {
  return text == nullptr || *text == '\0';
}

// True when any of the required texts is null or empty.
inline bool AnyEmpty(std::initializer_list<const char*> texts) {
  for (const char* text : texts) {
    if (IsEmpty(text)) return true;
  }
  return false;
}

// True for a name that cannot be part of a path, of a line of a file or of a command: null, empty,
// with a slash, blank or control character in it, or an option ("-" first). The kernel takes no
// such interface name either, but for the last.
bool IsUnfitName(const char* name);

// A control character, a newline among them, would end a line of a file or of a program's input.
bool HasControlCharacters(std::string_view text);

// Copies text into a buffer of size bytes, cut to fit and always terminated; size 0 writes nothing.
void CopyText(std::string_view text, char* buffer, std::size_t size);

// The same into an array field of a record.
template <std::size_t N>
void CopyText(std::string_view text, char (&field)[N]) {
  CopyText(text, field, N);
}

// The text of an array field, which may lack its terminator.
template <std::size_t N>
std::string_view FieldText(const char (&field)[N]) {
  const std::string_view all(field, N);
  return all.substr(0, all.find('\0'));
}

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

// An interface name as the kernel takes it: at most 15 characters.
inline std::string_view KernelName(std::string_view ifname) {
  return ifname.substr(0, 15);
}

// False for a name that would be cut on its way to the kernel, and so be another interface's.
inline bool FitsKernel(std::string_view ifname) {
  return KernelName(ifname) == ifname;
}

// Splits at any of the separators; empty fields are kept (values) or left out (names in kernel
// files).
std::vector<std::string_view> SplitFields(std::string_view text, std::string_view separators);
std::vector<std::string_view> SplitWords(std::string_view text,
                                         std::string_view separators = " \t\n");

// The text without blanks, tabs and line ends at either end.
std::string_view Trimmed(std::string_view text);

// The whole text as a decimal number, or nothing.
std::optional<long> ToNumber(std::string_view text);

// Natural order: where both names reach a digit at the same place the numbers are compared, eth2
// before eth10; after equal numbers the comparison goes on behind them.
bool NaturalLess(std::string_view a, std::string_view b);

}  // namespace frame
