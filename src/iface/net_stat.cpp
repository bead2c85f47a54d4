// The traffic counters of every interface.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include <zarnnetsdk/iface.h>

#include "frame/log.h"
#include "frame/net_dev.h"
#include "frame/text.h"

using namespace frame;

namespace {

// Bytes, packets, errors and drops; the receiving side has four more columns before the sending
// side begins.
void Fill(const NetDevEntry& entry, KOPANETSTAT* stat) {
  *stat = KOPANETSTAT{};
  CopyText(entry.name, stat->name);
  std::sscanf(entry.counters.c_str(),
              "%" SCNu64 "%" SCNu64 "%" SCNu64 "%" SCNu64
              "%*u%*u%*u%*u"
              "%" SCNu64 "%" SCNu64 "%" SCNu64 "%" SCNu64,
              &stat->rxBytes, &stat->rxPackets, &stat->rxErrors, &stat->rxDropped, &stat->txBytes,
              &stat->txPackets, &stat->txErrors, &stat->txDropped);
}

}  // namespace

PKOPANETSTATLIST KOPANetStatInit(int cMax) {
  if (cMax < 1) return FRAME_FAIL(kBadParameter, nullptr);
  const std::size_t size =
      sizeof(KOPANETSTATLIST) + static_cast<std::size_t>(cMax) * sizeof(KOPANETSTAT);
  auto* const list = static_cast<PKOPANETSTATLIST>(std::calloc(1, size));
  if (list == nullptr) return FRAME_FAIL(kNoMemory, nullptr);
  list->nMax = cMax;
  return list;
}

int KOPANetStatGetAll(PKOPANETSTATLIST pList) try {
  if (pList == nullptr) return FRAME_FAIL(kBadParameter, -1);
  const auto entries = ReadNetDev();
  if (!entries) return -1;
  pList->nItem = 0;
  for (const NetDevEntry& entry : *entries) {
    if (pList->nItem == pList->nMax) break;
    Fill(entry, &pList->rgItem[pList->nItem++]);
  }
  return pList->nItem;
}
FRAME_NO_EXCEPTIONS(-1)

void KOPANetStatFree(PKOPANETSTATLIST pList) {
  std::free(pList);
}
