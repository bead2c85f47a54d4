// SPDX-License-Identifier: Apache-2.0
// Wakes a machine of the local network by its MAC address.
#include <algorithm>
#include <array>
#include <charconv>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <optional>
#include <string_view>
#include <sys/socket.h>
#include <vector>

#include <zarnnetsdk/addr.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

using Mac = std::array<unsigned char, ETH_ALEN>;
constexpr unsigned short kWakeProtocol = 0x0842;

// "02:00:00:00:00:10" or "02-00-00-00-00-10".
std::optional<Mac> ParseMac(std::string_view text) {
  constexpr std::size_t kDigits = 2;
  Mac mac{};
  if (text.size() != mac.size() * (kDigits + 1) - 1) return std::nullopt;
  const char separator = text[kDigits];
  if (separator != ':' && separator != '-') return std::nullopt;
  for (std::size_t i = 0; i < mac.size(); ++i) {
    const std::size_t at = i * (kDigits + 1);
    if (i != 0 && text[at - 1] != separator) return std::nullopt;
    const char* const end = text.data() + at + kDigits;
    if (std::from_chars(text.data() + at, end, mac[i], 16).ptr != end) return std::nullopt;
  }
  return mac;
}

// What a sleeping network card looks for: six bytes of ones, then its address sixteen times.
std::vector<unsigned char> WakeText(const Mac& mac) {
  constexpr int kTimes = 16;
  std::vector<unsigned char> text(mac.size(), 0xFF);
  for (int i = 0; i < kTimes; ++i)
    text.insert(text.end(), mac.begin(), mac.end());
  return text;
}

sockaddr_ll Everybody(unsigned ifindex) {
  sockaddr_ll address{};
  address.sll_family = AF_PACKET;
  address.sll_protocol = htons(kWakeProtocol);
  address.sll_ifindex = static_cast<int>(ifindex);
  address.sll_halen = ETH_ALEN;
  std::fill_n(address.sll_addr, ETH_ALEN, static_cast<unsigned char>(0xFF));
  return address;
}

// The kernel puts the frame's head before the text. A socket of protocol 0 hears nothing.
int Send(unsigned ifindex, const std::vector<unsigned char>& text, const char* ifname) {
  const Descriptor socket(::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!socket) {
    LOG_ERROR("%s:%d Failed to open packet socket. %m");
    return Fail(ZARNNETERR_OPEN, -1);
  }
  const int on = 1;
  if (::setsockopt(socket.Get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0) {
    LOG_ERROR("%s:%d Failed to enable broadcast. %m");
    return Fail(ZARNNETERR_COMMAND, -1);
  }
  const sockaddr_ll to = Everybody(ifindex);
  const ssize_t sent = ::sendto(socket.Get(), text.data(), text.size(), 0,
                                reinterpret_cast<const sockaddr*>(&to), sizeof to);
  if (sent == static_cast<ssize_t>(text.size())) return 0;
  LOG_ERROR("%s:%d Failed to send on %s. %m", ifname);
  return Fail(ZARNNETERR_COMMAND, -1);
}

}  // namespace

int KOPANetEtherWake(const char* szIfname, const char* szMac) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname) || IsEmpty(szMac)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto mac = ParseMac(szMac);
    if (!mac) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const unsigned ifindex = ::if_nametoindex(szIfname);
    if (ifindex == 0) {
      LOG_ERROR("%s:%d No interface %s", szIfname);
      return Fail(ZARNNETERR_NOT_FOUND, -1);
    }
    return Send(ifindex, WakeText(*mac), szIfname);
  });
}
