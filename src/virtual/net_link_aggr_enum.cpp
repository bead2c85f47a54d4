// SPDX-License-Identifier: Apache-2.0
// The bonds of the kernel's bonding driver, and the slaves of one.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"
#include "frame/facts/bonds.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"

using namespace frame;

int ZARNNetLinkAggrExist() {
  return Boundary(-1, [&]() -> int {
    LineReader lines(paths::kBondingMasters);
    if (!lines.IsOpen()) return 0;
    if (lines.Next()) return 1;
    return lines.Failed() ? Fail(ZARNNETERR_READ, -1) : 0;
  });
}

int ZARNNetLinkAggrEnum(PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    if (ppList == nullptr || *ppList == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto bonds = facts::KernelBonds();
    if (!bonds) return -1;
    for (const std::string& bond : *bonds) {
      const auto slaves = facts::KernelSlavesOf(bond);
      if (slaves && !slaves->empty() && !PushTexts({bond}, ppList)) {
        return Fail(ZARNNETERR_NO_MEMORY, -1);
      }
    }
    return static_cast<int>(bonds->size());
  });
}

int ZARNNetLinkAggrPhyGet(const char* szBond, PKOPACSZLIST* ppSlaves) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szBond) || ppSlaves == nullptr || *ppSlaves == nullptr) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto slaves = facts::KernelSlavesOf(szBond);
    if (!slaves) return -1;
    if (!PushTexts(*slaves, ppSlaves)) return Fail(ZARNNETERR_NO_MEMORY, -1);
    return static_cast<int>(slaves->size());
  });
}
