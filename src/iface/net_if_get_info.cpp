// One interface as the kernel and its configuration have it, up or down.
#include <zarnnetsdk/iface.h>

#include "frame/error.h"
#include "frame/kernel.h"
#include "frame/text.h"
#include "iface/record.h"

using namespace frame;

int ZARNNetIFGetInfo(const char* szIfname, KOPANetIfInfo* pInfo) try {
  if (IsUnfitName(szIfname) || pInfo == nullptr) return FRAME_FAIL(kBadParameter, -1);
  const InetSocket socket;
  if (!socket.IsOpen()) return FRAME_FAIL(kRefused, -1);
  // Cut, a longer name would be another interface's.
  const auto flags = FitsKernel(szIfname) ? socket.Flags(szIfname) : std::nullopt;
  if (!flags) return FRAME_FAIL(kNotFound, -1);
  KOPANetIfInfo info{};
  inventory::FillRecord(socket, szIfname, *flags, inventory::HasCarrier(szIfname, *flags), &info);
  *pInfo = info;
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetIFGetInfoEx(const char* szIfname, KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig) {
  if (pInfo == nullptr || pConfig == nullptr) return FRAME_FAIL(kBadParameter, -1);
  KOPANetIfInfo info{};
  ZARNNETIFADDR config = *pConfig;
  if (ZARNNetIFGetInfo(szIfname, &info) < 0 || ZARNNetIFGetIPConfig(szIfname, &config) < 0) {
    return -1;
  }
  *pInfo = info;
  *pConfig = config;
  return 0;
}
