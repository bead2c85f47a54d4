// Speed, duplex, carrier and autonegotiation of a port, as its driver tells them.
#include <climits>
#include <cstddef>
#include <linux/ethtool.h>
#include <optional>
#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

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
bool AskLinkSettings(const InetSocket& socket, const char* ifname, ZARNNETETHINFO* info) {
  union {
    ethtool_link_settings head;
    __u32 room[sizeof(ethtool_link_settings) / sizeof(__u32) + 3 * SCHAR_MAX];
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
bool AskOldSettings(const InetSocket& socket, const char* ifname, ZARNNETETHINFO* info) {
  ethtool_cmd request{};
  request.cmd = ETHTOOL_GSET;
  if (!socket.AskDriver(ifname, &request)) return false;
  info->speed = SpeedOf(ethtool_cmd_speed(&request));
  info->duplex = DuplexOf(request.duplex);
  info->autoneg = AutonegOf(request.autoneg);
  return true;
}

// Empty when the kernel has no answer; it refuses to read these files of an interface that is down.
std::string ReadSysNet(const char* ifname, const char* file) {
  LineReader lines(paths::SysNet(ifname, file));
  if (!lines.IsOpen()) return {};
  return std::string(Trimmed(lines.Next().value_or("")));
}

void ReadSettings(const char* ifname, ZARNNETETHINFO* info) {
  const auto speed = ToNumber(ReadSysNet(ifname, "/speed"));
  if (speed && *speed >= 0) info->speed = SpeedOf(static_cast<unsigned>(*speed));
  const std::string duplex = ReadSysNet(ifname, "/duplex");
  if (duplex == "half") info->duplex = 0;
  if (duplex == "full") info->duplex = 1;
}

bool HasCarrier(const InetSocket& socket, const char* ifname) {
  ethtool_value request{};
  request.cmd = ETHTOOL_GLINK;
  if (socket.AskDriver(ifname, &request)) return request.data != 0;
  return ReadSysNet(ifname, "/carrier") == "1";
}

}  // namespace

int ZARNNetGetEthInfo(const char* szIfname, ZARNNETETHINFO* pInfo) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname) || pInfo == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const InetSocket socket;
    if (!socket.IsOpen()) {
      LOG_ERROR("%s:%d Failed to open socket");
      return Fail(ZARNNETERR_REFUSED, -1);
    }
    if (!FitsKernel(szIfname) || !socket.Flags(szIfname)) {
      LOG_ERROR("%s:%d No interface %s", szIfname);
      return Fail(ZARNNETERR_NOT_FOUND, -1);
    }
    ZARNNETETHINFO info{kUnknown, kUnknown, 0, kUnknown};
    if (!AskLinkSettings(socket, szIfname, &info) && !AskOldSettings(socket, szIfname, &info)) {
      ReadSettings(szIfname, &info);
    }
    info.link = HasCarrier(socket, szIfname) ? 1 : 0;
    *pInfo = info;
    return 0;
  });
}
