// SPDX-License-Identifier: Apache-2.0
// Names: of the appliance itself, and of mail domains and their labels.
#include <algorithm>
#include <string_view>

#include <zarnnetsdk/addr.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

// Of ASCII alone, whatever the caller's locale takes for a letter.
bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsAtom(std::string_view text) {
  constexpr std::string_view kSpecials = "\"(),.:;<>[]\\@";
  return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
    return static_cast<unsigned char>(c) > ' ' && kSpecials.find(c) == std::string_view::npos;
  });
}

}  // namespace

int BlKOPAIsHostname(const char* szName) {
  return Boundary(0, [&]() -> int {
    constexpr std::size_t kLongest = 15;
    if (IsEmpty(szName)) return 0;
    const std::string_view name(szName);
    if (name.size() > kLongest || IsDigit(name.front()) || name.front() == '-') return 0;
    const bool fits = std::all_of(name.begin(), name.end(), [](char c) {
      return IsLetter(c) || IsDigit(c) || c == '_' || c == '-';
    });
    return fits ? 1 : 0;
  });
}

int BlKOPAIsAtom(const char* szAtom) {
  return Boundary(0, [&]() -> int {
    if (szAtom == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return IsAtom(szAtom) ? 1 : 0;
  });
}

int BlKOPAIsDomain(const char* szDomain) {
  return Boundary(0, [&]() -> int {
    constexpr std::size_t kJudged = 511;
    if (szDomain == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const auto labels = SplitFields(std::string_view(szDomain).substr(0, kJudged), ".");
    return std::all_of(labels.begin(), labels.end(), IsAtom) ? 1 : 0;
  });
}
