// The broadcast and the network address of a subnet, asked of the system's ipcalc.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <zarnnetsdk/addr.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

namespace {

bool IsMissing(const char* szAddr, const char* szOut, int cbOut) {
  return IsEmpty(szAddr) || szOut == nullptr || cbOut <= 0;
}

// What ipcalc prints first, as far as it fits the caller's buffer.
std::optional<std::string> FirstLine(const char* option, const char* szAddr, int cbOut) {
  constexpr int kLongest = 1024;
  const CommandOutput output = OutputOf(paths::kIpcalc, option, szAddr);
  if (!output) return std::nullopt;
  std::vector<char> line(static_cast<std::size_t>(std::min(cbOut, kLongest)));
  if (std::fgets(line.data(), static_cast<int>(line.size()), output.get()) == nullptr) {
    return std::nullopt;
  }
  return line.data();
}

// The word behind the name that the line begins with.
std::optional<std::string> ValueOf(std::string_view line, std::string_view name) {
  if (!line.starts_with(name)) return std::nullopt;
  const auto words = SplitWords(line.substr(name.size()), " \t\r\n\v\f");
  if (words.empty()) return std::nullopt;
  return std::string(words.front());
}

// The caller's buffer need not hold a terminated text.
void TrimInPlace(char* buffer, std::size_t size) {
  const std::string_view text(buffer, ::strnlen(buffer, size));
  const std::string_view trimmed = Trimmed(text);
  if (trimmed.size() == text.size()) return;
  std::memmove(buffer, trimmed.data(), trimmed.size());
  buffer[trimmed.size()] = '\0';
}

int Answer(const std::optional<std::string>& address, const char* szAddr, char* szOut, int cbOut) {
  if (!address) {
    // For both addresses: those who watch the log know the one message.
    LOG_ERROR("%s:%d excute cmd /bin/ipcalc -b %s failed", szAddr);
    return -1;
  }
  CopyText(*address, szOut, static_cast<std::size_t>(cbOut));
  return 0;
}

}  // namespace

int ZARNNetCalBroadcast(const char* szAddr, char* szOut, int cbOut) {
  return Boundary(-1, [&]() -> int {
    if (IsMissing(szAddr, szOut, cbOut)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto line = FirstLine("-b", szAddr, cbOut);
    const auto address = line ? ValueOf(Trimmed(*line), "BROADCAST=") : std::nullopt;
    return Answer(address, szAddr, szOut, cbOut);
  });
}

int ZARNNetCalNetwork(const char* szAddr, char* szOut, int cbOut) {
  return Boundary(-1, [&]() -> int {
    if (IsMissing(szAddr, szOut, cbOut)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto line = FirstLine("-n", szAddr, cbOut);
    // It is the caller's buffer that is trimmed here, not the line: a line that begins with a blank
    // is no answer, and a failed call leaves the trimmed text. Callers were written against both.
    if (line) TrimInPlace(szOut, static_cast<std::size_t>(cbOut));
    const auto address = line ? ValueOf(*line, "NETWORK=") : std::nullopt;
    return Answer(address, szAddr, szOut, cbOut);
  });
}
