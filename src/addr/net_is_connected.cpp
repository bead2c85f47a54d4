// SPDX-License-Identifier: Apache-2.0
// Does a host answer? Asks each of its addresses for an echo, at once and then every second.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <netinet/icmp6.h>
#include <netinet/ip.h>
#include <netinet/ip_icmp.h>
#include <optional>
#include <poll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <vector>

#include <zarnnetsdk/addr.h>

#include "addr/resolved.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t kHeadSize = 8;
static_assert(kHeadSize == sizeof(icmphdr) && kHeadSize == sizeof(icmp6_hdr));
constexpr std::size_t kTokenSize = 16;
using Echo = std::array<unsigned char, kHeadSize + kTokenSize>;
using Token = std::array<unsigned char, kTokenSize>;

// The Internet checksum; the kernel makes that of ICMPv6 by itself.
unsigned short Checksum(const Echo& echo) {
  unsigned sum = 0;
  for (std::size_t i = 0; i < echo.size(); i += 2) {
    unsigned short word = 0;
    std::memcpy(&word, echo.data() + i, sizeof word);
    sum += word;
  }
  sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<unsigned short>(~(sum + (sum >> 16)));
}

Echo Request(int family, const Token& token) {
  Echo echo{};
  echo[0] = family == AF_INET6 ? ICMP6_ECHO_REQUEST : ICMP_ECHO;
  std::copy(token.begin(), token.end(), echo.begin() + kHeadSize);
  if (family == AF_INET6) return echo;
  const unsigned short checksum = Checksum(echo);
  std::memcpy(echo.data() + offsetof(icmphdr, checksum), &checksum, sizeof checksum);
  return echo;
}

// A raw socket hears every answer that comes from its host: the token tells ours. Those who may
// open none have the kernel's ping sockets, where the administrator lets them.
class Probe {
 public:
  Probe(const addrinfo& host, const Token& token)
      : family_(host.ai_family),
        isRaw_(true),
        socket_(::socket(family_, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, Protocol())),
        token_(token) {
    if (!socket_) {
      isRaw_ = false;
      socket_ =
          Descriptor(::socket(family_, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, Protocol()));
    }
    reachable_ = socket_ && ::connect(socket_.Get(), host.ai_addr, host.ai_addrlen) == 0;
  }

  [[nodiscard]] bool HasSocket() const { return static_cast<bool>(socket_); }
  [[nodiscard]] int Fd() const { return reachable_ ? socket_.Get() : -1; }

  void Ask() const {
    if (!reachable_) return;
    const Echo echo = Request(family_, token_);
    // What cannot be sent now is asked again in a second.
    static_cast<void>(::send(socket_.Get(), echo.data(), echo.size(), 0));
  }

  // Takes what has come, errors too: a host may be unreachable now and there in a second.
  [[nodiscard]] bool HasAnswer() const {
    std::array<unsigned char, 2048> packet{};
    for (;;) {
      const ssize_t length = ::recv(socket_.Get(), packet.data(), packet.size(), 0);
      if (length <= 0) return false;
      if (IsAnswer(packet.data(), static_cast<std::size_t>(length))) return true;
    }
  }

 private:
  [[nodiscard]] int Protocol() const {
    if (family_ == AF_INET6) return IPPROTO_ICMPV6;
    return IPPROTO_ICMP;
  }

  [[nodiscard]] bool IsAnswer(const unsigned char* packet, std::size_t length) const {
    // Raw IPv4 comes with the head of its packet, counted in words in its first byte.
    const std::size_t head = isRaw_ && family_ == AF_INET ? (packet[0] & 0xFU) * 4 : 0;
    if (length < head + kHeadSize + kTokenSize) return false;
    const unsigned char answer = family_ == AF_INET6 ? ICMP6_ECHO_REPLY : ICMP_ECHOREPLY;
    return packet[head] == answer &&
           std::equal(token_.begin(), token_.end(), packet + head + kHeadSize);
  }

  int family_;
  bool isRaw_;
  Descriptor socket_;
  Token token_;
  bool reachable_ = false;
};

std::optional<std::vector<Probe>> MakeProbes(const addrinfo* hosts) {
  Token token{};
  if (::getrandom(token.data(), token.size(), 0) != static_cast<ssize_t>(token.size()))
    return std::nullopt;
  std::vector<Probe> probes;
  for (; hosts != nullptr; hosts = hosts->ai_next)
    probes.emplace_back(*hosts, token);
  const auto hasSocket = [](const Probe& probe) { return probe.HasSocket(); };
  if (std::any_of(probes.begin(), probes.end(), hasSocket)) return probes;
  return std::nullopt;
}

// Waits until then for an answer of any of them.
bool AwaitAnswer(const std::vector<Probe>& probes, Clock::time_point until) {
  std::vector<pollfd> waiting;
  waiting.reserve(probes.size());
  for (const Probe& probe : probes)
    waiting.push_back({probe.Fd(), POLLIN, 0});
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now()).count();
    if (left <= 0) return false;
    const int ready = ::poll(waiting.data(), waiting.size(), static_cast<int>(left));
    for (std::size_t i = 0; ready > 0 && i < probes.size(); ++i) {
      if (waiting[i].revents != 0 && probes[i].HasAnswer()) return true;
    }
  }
}

bool Answers(const std::vector<Probe>& probes, Clock::time_point deadline) {
  const auto isReachable = [](const Probe& probe) { return probe.Fd() >= 0; };
  if (std::none_of(probes.begin(), probes.end(), isReachable)) return false;
  while (Clock::now() < deadline) {
    for (const Probe& probe : probes)
      probe.Ask();
    if (AwaitAnswer(probes, std::min(deadline, Clock::now() + std::chrono::seconds(1))))
      return true;
  }
  return false;
}

}  // namespace

int BlKOPAIsConnected(const char* szHost, int cTimeoutSeconds) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szHost) || cTimeoutSeconds <= 0) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const auto deadline = Clock::now() + std::chrono::seconds(cTimeoutSeconds);
    const addr::Addresses addresses = addr::Resolve(szHost);
    if (!addresses) return 0;
    const auto probes = MakeProbes(addresses.get());
    if (!probes) {
      LOG_ERROR("%s:%d Failed to open a socket for an echo. %m");
      return Fail(ZARNNETERR_OPEN, 0);
    }
    return Answers(*probes, deadline) ? 1 : 0;
  });
}
