// SPDX-License-Identifier: Apache-2.0
// The broadcast and the network address of a subnet, asked of the system's ipcalc.
#include <algorithm>
#include <cstring>
#include <string_view>

#include <zarnnetsdk/addr.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/facts/ipcalc.h"

using namespace frame;

namespace {

// An address that begins with "-" would be an option of ipcalc.
bool IsUnfit(const char* szAddr, const char* szOut, int cbOut) {
  return IsEmpty(szAddr) || *szAddr == '-' || szOut == nullptr || cbOut <= 0;
}

// A line is read as far as it fits the caller's buffer.
std::size_t LineSize(int cbOut) {
  constexpr int kLongest = 1024;
  return static_cast<std::size_t>(std::min(cbOut, kLongest));
}

// The caller's buffer need not hold a terminated text.
void TrimInPlace(char* buffer, std::size_t size) {
  const std::string_view text(buffer, ::strnlen(buffer, size));
  const std::string_view trimmed = Trimmed(text);
  if (trimmed.size() == text.size()) return;
  std::memmove(buffer, trimmed.data(), trimmed.size());
  buffer[trimmed.size()] = '\0';
}

int GiveOut(const facts::IpcalcAnswer& answer, char* szOut, int cbOut) {
  if (!answer.address) return -1;
  CopyText(*answer.address, szOut, static_cast<std::size_t>(cbOut));
  return 0;
}

}  // namespace

int ZARNNetCalBroadcast(const char* szAddr, char* szOut, int cbOut) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfit(szAddr, szOut, cbOut)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return GiveOut(facts::BroadcastOf(szAddr, LineSize(cbOut)), szOut, cbOut);
  });
}

int ZARNNetCalNetwork(const char* szAddr, char* szOut, int cbOut) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfit(szAddr, szOut, cbOut)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto answer = facts::NetworkOf(szAddr, LineSize(cbOut));
    // It is the caller's buffer that is trimmed here, not the line: a failed call leaves the
    // trimmed text, and callers were written against it.
    if (answer.hasLine) TrimInPlace(szOut, static_cast<std::size_t>(cbOut));
    return GiveOut(answer, szOut, cbOut);
  });
}
