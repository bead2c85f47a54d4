// One interface as the kernel and its configuration have it, up or down.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/facts/record.h"
#include "frame/os/kernel.h"

using namespace frame;

int ZARNNetIFGetInfo(const char* szIfname, KOPANetIfInfo* pInfo) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname) || pInfo == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const InetSocket socket;
    if (!socket.IsOpen()) return Fail(ZARNNETERR_REFUSED, -1);
    // Cut, a longer name would be another interface's.
    const auto flags = FitsKernel(szIfname) ? socket.Flags(szIfname) : std::nullopt;
    if (!flags) return Fail(ZARNNETERR_NOT_FOUND, -1);
    KOPANetIfInfo info{};
    facts::FillRecord(socket, szIfname, *flags, facts::HasCarrier(szIfname, *flags), &info);
    *pInfo = info;
    return 0;
  });
}

int ZARNNetIFGetInfoEx(const char* szIfname, KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig) {
  return Boundary(-1, [&]() -> int {
    if (pInfo == nullptr || pConfig == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    KOPANetIfInfo info{};
    ZARNNETIFADDR config = *pConfig;
    if (ZARNNetIFGetInfo(szIfname, &info) < 0 || ZARNNetIFGetIPConfig(szIfname, &config) < 0) {
      return -1;
    }
    *pInfo = info;
    *pConfig = config;
    return 0;
  });
}
