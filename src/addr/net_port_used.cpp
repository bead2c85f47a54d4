// SPDX-License-Identifier: Apache-2.0
// Which local ports are taken, as the kernel's socket tables tell.
#include <bitset>
#include <cerrno>
#include <charconv>
#include <optional>
#include <string_view>
#include <strings.h>
#include <vector>

#include <zarnnetsdk/addr.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

constexpr int kMaxPort = 65535;
using Ports = std::bitset<kMaxPort + 1>;
using Tables = std::vector<const char*>;

// What is left of a connection that has ended: a server may take its port.
constexpr unsigned kTimeWait = 6;

std::optional<unsigned> ToHex(std::string_view text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// "  0: 0100007F:0277 00000000:0000 0A ...": number, local end, far end, state.
void TakeLine(std::string_view line, Ports* ports) {
  const auto words = SplitWords(line);
  if (words.size() < 4) return;
  const auto port = ToHex(words[1].substr(words[1].rfind(':') + 1));
  const auto state = ToHex(words[3]);
  if (port && *port <= kMaxPort && state && *state != kTimeWait) ports->set(*port);
}

// A kernel without IPv6 has no tables of it.
bool ReadTable(const char* path, bool mayLack, Ports* ports) {
  LineReader lines(path);
  if (!lines.IsOpen()) {
    if (mayLack && errno == ENOENT) return true;
    LOG_ERROR("%s:%d Failed to open %s. %m", path);
    return Fail(ZARNNETERR_OPEN, false);
  }
  while (const auto line = lines.Next())
    TakeLine(*line, ports);
  if (!lines.Failed()) return true;
  LOG_ERROR("%s:%d Failed to read %s.", path);
  return Fail(ZARNNETERR_READ, false);
}

struct Protocols {
  bool tcp;
  bool udp;
};

std::optional<Protocols> ProtocolsOf(const char* text) {
  if (IsEmpty(text)) return Protocols{true, true};
  const Protocols named{::strcasecmp(text, "tcp") == 0, ::strcasecmp(text, "udp") == 0};
  return named.tcp || named.udp ? std::optional(named) : std::nullopt;
}

std::optional<Ports> UsedPorts(Protocols protocols) {
  Ports ports;
  if (protocols.tcp &&
      !(ReadTable(paths::kProcTcp, false, &ports) && ReadTable(paths::kProcTcp6, true, &ports))) {
    return std::nullopt;
  }
  if (protocols.udp &&
      !(ReadTable(paths::kProcUdp, false, &ports) && ReadTable(paths::kProcUdp6, true, &ports))) {
    return std::nullopt;
  }
  return ports;
}

// Fills the list with the taken ports of a range, as many as it has room for, and counts them all.
int ListUsed(int first, int last, const char* protocol, int* list, int room) {
  const auto protocols = ProtocolsOf(protocol);
  const bool isRange = first >= 1 && first <= last && last <= kMaxPort;
  if (!isRange || !protocols || room < 0 || (list == nullptr && room > 0))
    return Fail(ZARNNETERR_BAD_PARAMETER, -1);
  const auto used = UsedPorts(*protocols);
  if (!used) return -1;
  int count = 0;
  for (int port = first; port <= last; ++port) {
    if (!used->test(static_cast<std::size_t>(port))) continue;
    if (count < room) list[count] = port;
    ++count;
  }
  return count;
}

}  // namespace

int ZARNNetGetPortUsedInRange(int first, int last, const char* szProto, int* rgPort, int cPort) {
  return Boundary(-1, [&]() -> int { return ListUsed(first, last, szProto, rgPort, cPort); });
}

int ZARNNetIsPortRangeUsed(int first, int last, const char* szProto) {
  return Boundary(-1, [&]() -> int {
    const int count = ListUsed(first, last, szProto, nullptr, 0);
    return count > 0 ? 1 : count;
  });
}
