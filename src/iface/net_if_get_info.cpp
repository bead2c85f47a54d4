// SPDX-License-Identifier: Apache-2.0
// One interface as the kernel and its configuration have it, up or down.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/facts/record.h"
#include "frame/os/kernel.h"
#include "iface/records.h"

using namespace frame;

std::optional<KOPANetIfInfo> interfaces::ReadKernelRecord(const std::string& ifname) {
  if (IsUnfitName(ifname.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, std::nullopt);
  // Cut, a longer name would be another interface's.
  const auto flags = FitsKernel(ifname) ? socket.Flags(ifname) : std::nullopt;
  if (!flags) return Fail(ZARNNETERR_NOT_FOUND, std::nullopt);
  KOPANetIfInfo info{};
  facts::FillRecord(socket, ifname, *flags, facts::HasCarrier(ifname, *flags), &info);
  return info;
}

int ZARNNetIFGetInfo(const char* szIfname, KOPANetIfInfo* pInfo) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || pInfo == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto info = interfaces::ReadKernelRecord(szIfname);
    if (!info) return -1;
    *pInfo = *info;
    return 0;
  });
}

int ZARNNetIFGetInfoEx(const char* szIfname, KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || pInfo == nullptr || pConfig == nullptr)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto info = interfaces::ReadKernelRecord(szIfname);
    ZARNNETIFADDR config = *pConfig;
    if (!info || !interfaces::ReadIpConfig(szIfname, &config)) return -1;
    *pInfo = *info;
    *pConfig = config;
    return 0;
  });
}
