// SPDX-License-Identifier: Apache-2.0
// What the files say of an interface: fixed or leased address, local LAN, number of built-in ports.
#include <cstdlib>
#include <string>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "iface/records.h"

using namespace frame;

namespace {

// The values of the record's boot protocol.
constexpr std::int32_t kDhcp = 0;
constexpr std::int32_t kStatic = 1;

// Of a file that cannot be read the failure has set its code already.
template <std::size_t N>
bool ReadField(const std::string& path, const char* key, char (&field)[N]) {
  const KeyValue value = ReadKey(path, key, N);
  CopyText(value.text, field);
  if (!value.Found() && !value.Unreadable()) SetError(ZARNNETERR_UNEXPECTED_CONTENT);
  return value.Found();
}

bool ReadAddressAndMask(const std::string& path, ZARNNETIFADDR* info) {
  return ReadField(path, keys::kIpAddr, info->szIP) &&
         ReadField(path, keys::kNetmask, info->szMask);
}

}  // namespace

bool interfaces::ReadIpConfig(const std::string& ifname, ZARNNETIFADDR* config) {
  const Lock lock(kNetworkRead);
  if (!lock.Held()) {
    LOG_ERROR("%s:%d KOPACFileLock() failed.(%X)", KOPACErrGet());
    return Fail(ZARNNETERR_LOCK, false);
  }
  if (!dhcpd::IsDhcp(ifname)) {
    config->bootProto = kStatic;
    return ReadAddressAndMask(paths::Ifcfg(ifname), config);
  }
  config->bootProto = kDhcp;
  const std::string lease = paths::DhcpInfo(ifname);
  if (Exists(lease)) return ReadAddressAndMask(lease, config);
  LOG_NOTE("%s:%d /etc/dhclient/ipv4/dhcpcd-%s.info is not exist", ifname.c_str());
  return true;
}

int ZARNNetIfIsStaticIP(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const Lock lock(kNetworkRead);
    if (!lock.Held()) {
      LOG_ERROR("%s:%d KOPACFileLock() failed.(%X)", KOPACErrGet());
      return Fail(ZARNNETERR_LOCK, 0);
    }
    const KeyValue proto = ReadKey(paths::Ifcfg(szIfname), keys::kBootProto, 16);
    if (!proto.Found()) {
      LOG_ERROR("%s:%d Get BOOTPROTO key failed.(%X)", KOPACErrGet());
      return 0;
    }
    return proto.text == model::kStatic ? 1 : 0;
  });
}

int KOPANetIFIsLocalLan(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return KeyIs(paths::Ifcfg(szIfname), "LOCAL_LAN", "yes") ? 1 : 0;
  });
}

int ZARNNetIFGetIPConfig(const char* szIfname, ZARNNETIFADDR* pNetInfo) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return InvalidArgument("((void *)0) != szIfname", -1);
    if (pNetInfo == nullptr) return InvalidArgument("NULL != pNetInfo", -1);
    return interfaces::ReadIpConfig(szIfname, pNetInfo) ? 0 : -1;
  });
}

int ZARNNetInternalLanNumGet(void) {
  return Boundary(-1, [&]() -> int {
    LineReader lines(paths::kInternalNetifNum);
    if (!lines.IsOpen()) {
      LOG_ERROR("%s:%d open file /proc/sys/kernel/zarn_internal_netif_num failed");
      return Fail(ZARNNETERR_OPEN, -1);
    }
    const auto line = lines.Next();
    const auto number = line ? ToNumber(Trimmed(*line)) : std::nullopt;
    if (number && *number > 0) return static_cast<int>(*number);
    const KeyValue ports = ReadKey(paths::kFactoryInfo, "maxlanport", 16);
    return ports.Found() ? std::atoi(ports.text.c_str()) : 1;
  });
}
