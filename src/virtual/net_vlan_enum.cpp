// SPDX-License-Identifier: Apache-2.0
// Every VLAN of the kernel.
#include <algorithm>
#include <cstdlib>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/facts/vlans.h"

using namespace frame;

int KOPANetVlanEnum(KOPANETVLAN** ppVlan, int* pcVlan) {
  return Boundary(-1, [&]() -> int {
    if (ppVlan == nullptr || pcVlan == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    *ppVlan = nullptr;
    *pcVlan = 0;
    const auto found = facts::Vlans();
    if (!found) return -1;
    if (found->empty()) return 0;
    auto* const vlans = static_cast<KOPANETVLAN*>(std::calloc(found->size(), sizeof(KOPANETVLAN)));
    if (vlans == nullptr) return Fail(ZARNNETERR_NO_MEMORY, -1);
    std::copy(found->begin(), found->end(), vlans);
    *ppVlan = vlans;
    *pcVlan = static_cast<int>(found->size());
    return 0;
  });
}
