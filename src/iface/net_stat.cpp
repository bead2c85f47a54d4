// SPDX-License-Identifier: Apache-2.0
// The traffic counters of every interface.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/net_dev.h"

using namespace frame;

namespace {

// Bytes, packets, errors and drops; the receiving side has four more columns before the sending
// side begins.
void Fill(const facts::NetDevEntry& entry, KOPANETSTAT* stat) {
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
  return Boundary(nullptr, [&]() -> PKOPANETSTATLIST {
    if (cMax < 1) return Fail(ZARNNETERR_BAD_PARAMETER, nullptr);
    const std::size_t size =
        sizeof(KOPANETSTATLIST) + static_cast<std::size_t>(cMax) * sizeof(KOPANETSTAT);
    auto* const list = static_cast<PKOPANETSTATLIST>(std::calloc(1, size));
    if (list == nullptr) return Fail(ZARNNETERR_NO_MEMORY, nullptr);
    list->nMax = cMax;
    return list;
  });
}

int KOPANetStatGetAll(PKOPANETSTATLIST pList) {
  return Boundary(-1, [&]() -> int {
    if (pList == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto entries = facts::ReadNetDev();
    if (!entries) return -1;
    pList->nItem = 0;
    for (const facts::NetDevEntry& entry : *entries) {
      if (pList->nItem == pList->nMax) break;
      Fill(entry, &pList->rgItem[pList->nItem++]);
    }
    return pList->nItem;
  });
}

void KOPANetStatFree(PKOPANETSTATLIST pList) {
  Boundary([&] { std::free(pList); });
}
