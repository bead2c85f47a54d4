// SPDX-License-Identifier: Apache-2.0
// Small operations on text that the whole library shares.
#include "frame/base/text.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace frame {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view TakeNumber(std::string_view* text) {
  std::size_t length = 0;
  while (length < text->size() && IsDigit((*text)[length]))
    ++length;
  std::string_view number = text->substr(0, length);
  text->remove_prefix(length);
  while (number.size() > 1 && number.front() == '0')
    number.remove_prefix(1);
  return number;
}

}  // namespace

bool IsUnfitName(const char* name) {
  if (IsEmpty(name)) return true;
  const std::string_view text(name);
  return text.front() == '-' || HasControlCharacters(text) ||
         text.find_first_of("/ ") != std::string_view::npos;
}

bool HasControlCharacters(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == 0x7F;
  });
}

void CopyText(std::string_view text, char* buffer, std::size_t size) {
  if (size == 0) return;
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
}

std::string Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

std::vector<std::string_view> SplitFields(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t end = text.find_first_of(separators);
    fields.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return fields;
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string_view> SplitWords(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> words = SplitFields(text, separators);
  std::erase_if(words, [](std::string_view word) { return word.empty(); });
  return words;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::optional<long> ToNumber(std::string_view text) {
  long number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end) return std::nullopt;
  return number;
}

bool NaturalLess(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::string_view numberA = TakeNumber(&a);
      const std::string_view numberB = TakeNumber(&b);
      if (numberA.size() != numberB.size()) return numberA.size() < numberB.size();
      if (numberA != numberB) return numberA < numberB;
    } else {
      if (a.front() != b.front()) return a < b;
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  return a.size() < b.size();
}

}  // namespace frame
