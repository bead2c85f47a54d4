// The bonds of the kernel's bonding driver, and the slaves of one.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

bool HasSlaves(const std::string& bond) {
  StringList slaves(ZARNLINKAGGR_MAX_SLAVE);
  return ZARNNetLinkAggrPhyGet(bond.c_str(), slaves.Out()) > 0;
}

}  // namespace

int ZARNNetLinkAggrExist() {
  return Boundary(-1, [&]() -> int {
    LineReader lines(paths::kBondingMasters);
    if (!lines.IsOpen()) return 0;
    if (lines.Next()) return 1;
    return lines.Failed() ? -1 : 0;
  });
}

int ZARNNetLinkAggrEnum(PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    if (ppList == nullptr || *ppList == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    LineReader lines(paths::kBondingMasters);
    if (!lines.IsOpen()) return 0;  // no bonding driver, no bonds
    const auto line = lines.Next();
    if (!line) return lines.Failed() ? Fail(ZARNNETERR_READ, -1) : 0;
    const auto bonds = SplitWords(*line);
    for (const std::string_view word : bonds) {
      const std::string bond(word);
      if (!HasSlaves(bond)) continue;
      if (KOPACSzListPush(ppList, bond.c_str()) < 0) return Fail(ZARNNETERR_NO_MEMORY, -1);
    }
    return static_cast<int>(bonds.size());
  });
}

int ZARNNetLinkAggrPhyGet(const char* szBond, PKOPACSZLIST* ppSlaves) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szBond) || ppSlaves == nullptr || *ppSlaves == nullptr) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    LineReader lines(paths::SysNet(szBond, "/bonding/slaves"));
    if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, -1);
    const auto line = lines.Next();
    if (!line) return Fail(ZARNNETERR_READ, -1);
    const auto slaves = SplitWords(*line);
    for (const std::string_view slave : slaves) {
      if (KOPACSzListPush(ppSlaves, std::string(slave).c_str()) < 0)
        return Fail(ZARNNETERR_NO_MEMORY, -1);
    }
    return static_cast<int>(slaves.size());
  });
}
