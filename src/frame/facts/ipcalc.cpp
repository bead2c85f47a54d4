// SPDX-License-Identifier: Apache-2.0
// The broadcast and the network address of a subnet, as the system's ipcalc works them out.
#include "frame/facts/ipcalc.h"

#include <cstdio>
#include <string_view>
#include <vector>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

namespace frame::facts {
namespace {

// What ipcalc prints first.
std::optional<std::string> FirstLine(const char* option, const std::string& address,
                                     std::size_t size) {
  const CommandOutput output = OutputOf(paths::kIpcalc, option, address);
  if (!output) return std::nullopt;
  std::vector<char> line(size);
  if (std::fgets(line.data(), static_cast<int>(size), output.get()) == nullptr) return std::nullopt;
  return line.data();
}

// The word behind the name that the line begins with.
std::optional<std::string> ValueOf(std::string_view line, std::string_view name) {
  if (!line.starts_with(name)) return std::nullopt;
  const auto words = SplitWords(line.substr(name.size()), " \t\r\n\v\f");
  if (words.empty()) return std::nullopt;
  return std::string(words.front());
}

IpcalcAnswer Answer(const std::optional<std::string>& line, std::optional<std::string> value,
                    const std::string& address) {
  constexpr Place kAt("net_cal_broadcast");
  if (!value) {
    // For both addresses: those who watch the log know the one message.
    LOG_ERROR_AT(kAt, "%s:%d excute cmd /bin/ipcalc -b %s failed", address.c_str());
    SetError(ZARNNETERR_COMMAND, kAt);
  }
  return {line.has_value(), std::move(value)};
}

}  // namespace

IpcalcAnswer BroadcastOf(const std::string& address, std::size_t size) {
  const auto line = FirstLine("-b", address, size);
  return Answer(line, line ? ValueOf(Trimmed(*line), "BROADCAST=") : std::nullopt, address);
}

// A line that begins with a blank is no answer here: callers were written against it.
IpcalcAnswer NetworkOf(const std::string& address, std::size_t size) {
  const auto line = FirstLine("-n", address, size);
  return Answer(line, line ? ValueOf(*line, "NETWORK=") : std::nullopt, address);
}

}  // namespace frame::facts
