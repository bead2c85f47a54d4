// SPDX-License-Identifier: Apache-2.0
// What the driver of a port tells of its link.
#include "frame/facts/driver.h"

#include <climits>
#include <linux/ethtool.h>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"

namespace frame::facts {
namespace {

// Its lines are known by the name of the function that asks for them.
constexpr char kSource[] = "net_get_eth_info";

constexpr int kUnknown = -1;

// A driver that does not know says so with all bits set, in 16 bits or in 32.
int SpeedOf(unsigned speed) {
  constexpr unsigned kUnknown16 = 0xFFFF;
  return speed == kUnknown16 || speed > INT_MAX ? kUnknown : static_cast<int>(speed);
}

int DuplexOf(unsigned duplex) {
  if (duplex == DUPLEX_HALF) return 0;
  return duplex == DUPLEX_FULL ? 1 : kUnknown;
}

int AutonegOf(unsigned autoneg) {
  if (autoneg == AUTONEG_DISABLE) return 0;
  return autoneg == AUTONEG_ENABLE ? 1 : kUnknown;
}

// The request ends in three sets of link modes. Asked with no room for them the kernel answers how
// many words a set takes, as a negative number; asked again with just that room it fills them in.
bool AskLinkSettings(const InetSocket& socket, const std::string& ifname, ZARNNETETHINFO* info) {
  union {
    ethtool_link_settings head;
    __u32 room[sizeof(ethtool_link_settings) / sizeof(__u32) + std::size_t{3} * SCHAR_MAX];
  } request{};
  request.head.cmd = ETHTOOL_GLINKSETTINGS;
  if (!socket.AskDriver(ifname, &request) || request.head.link_mode_masks_nwords >= 0) return false;
  const int words = -request.head.link_mode_masks_nwords;
  if (words > SCHAR_MAX) return false;
  request.head.cmd = ETHTOOL_GLINKSETTINGS;
  request.head.link_mode_masks_nwords = static_cast<__s8>(words);
  if (!socket.AskDriver(ifname, &request) || request.head.link_mode_masks_nwords <= 0) return false;
  info->speed = SpeedOf(request.head.speed);
  info->duplex = DuplexOf(request.head.duplex);
  info->autoneg = AutonegOf(request.head.autoneg);
  return true;
}

// The same of a kernel from before the link settings.
bool AskOldSettings(const InetSocket& socket, const std::string& ifname, ZARNNETETHINFO* info) {
  ethtool_cmd request{};
  request.cmd = ETHTOOL_GSET;
  if (!socket.AskDriver(ifname, &request)) return false;
  info->speed = SpeedOf(ethtool_cmd_speed(&request));
  info->duplex = DuplexOf(request.duplex);
  info->autoneg = AutonegOf(request.autoneg);
  return true;
}

// Empty when the kernel has no answer; it refuses to read these files of an interface that is down.
std::string ReadSysNet(const std::string& ifname, const char* file) {
  LineReader lines(paths::SysNet(ifname, file));
  if (!lines.IsOpen()) return {};
  return std::string(Trimmed(lines.Next().value_or("")));
}

void ReadSettings(const std::string& ifname, ZARNNETETHINFO* info) {
  const auto speed = ToNumber(ReadSysNet(ifname, "/speed"));
  if (speed && *speed >= 0) info->speed = SpeedOf(static_cast<unsigned>(*speed));
  const std::string duplex = ReadSysNet(ifname, "/duplex");
  if (duplex == "half") info->duplex = 0;
  if (duplex == "full") info->duplex = 1;
}

bool DriverHasCarrier(const InetSocket& socket, const std::string& ifname) {
  ethtool_value request{};
  request.cmd = ETHTOOL_GLINK;
  if (socket.AskDriver(ifname, &request)) return request.data != 0;
  return ReadSysNet(ifname, "/carrier") == "1";
}

}  // namespace

std::optional<ZARNNETETHINFO> DriverInfoOf(const std::string& ifname) {
  constexpr Place kAt(kSource);
  const InetSocket socket;
  if (!socket.IsOpen()) {
    LOG_ERROR_AT(kAt, "%s:%d Failed to open socket");
    return Fail(ZARNNETERR_OPEN, std::nullopt, kAt);
  }
  if (!FitsKernel(ifname) || !socket.Flags(ifname)) {
    LOG_ERROR_AT(kAt, "%s:%d No interface %s", ifname.c_str());
    return Fail(ZARNNETERR_NOT_FOUND, std::nullopt, kAt);
  }
  ZARNNETETHINFO info{kUnknown, kUnknown, 0, kUnknown};
  if (!AskLinkSettings(socket, ifname, &info) && !AskOldSettings(socket, ifname, &info)) {
    ReadSettings(ifname, &info);
  }
  info.link = DriverHasCarrier(socket, ifname) ? 1 : 0;
  return info;
}

}  // namespace frame::facts
