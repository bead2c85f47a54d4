// The bonds of the kernel's bonding driver, and the slaves of one.
#include <zarnnetsdk/virtual.h>

#include "frame/containers.h"
#include "frame/error.h"
#include "frame/file.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

namespace {

bool HasSlaves(const std::string& bond) {
  StringList slaves(ZARNLINKAGGR_MAX_SLAVE);
  return ZARNNetLinkAggrPhyGet(bond.c_str(), slaves.Out()) > 0;
}

}  // namespace

int ZARNNetLinkAggrExist() try {
  LineReader lines(paths::kBondingMasters);
  if (!lines.IsOpen()) return 0;
  if (lines.Next()) return 1;
  return lines.Failed() ? -1 : 0;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetLinkAggrEnum(PKOPACSZLIST* ppList) try {
  if (ppList == nullptr || *ppList == nullptr) return FRAME_FAIL(kBadParameter, -1);
  LineReader lines(paths::kBondingMasters);
  if (!lines.IsOpen()) return 0;  // no bonding driver, no bonds
  const auto line = lines.Next();
  if (!line) return lines.Failed() ? FRAME_FAIL(kRead, -1) : 0;
  const auto bonds = SplitWords(*line);
  for (const std::string_view word : bonds) {
    const std::string bond(word);
    if (!HasSlaves(bond)) continue;
    if (KOPACSzListPush(ppList, bond.c_str()) < 0) return FRAME_FAIL(kNoMemory, -1);
  }
  return static_cast<int>(bonds.size());
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetLinkAggrPhyGet(const char* szBond, PKOPACSZLIST* ppSlaves) try {
  if (IsUnfitName(szBond) || ppSlaves == nullptr || *ppSlaves == nullptr) {
    return FRAME_FAIL(kBadParameter, -1);
  }
  LineReader lines(paths::SysNet(szBond, "/bonding/slaves"));
  if (!lines.IsOpen()) return FRAME_FAIL(kOpen, -1);
  const auto line = lines.Next();
  if (!line) return FRAME_FAIL(kRead, -1);
  const auto slaves = SplitWords(*line);
  for (const std::string_view slave : slaves) {
    if (KOPACSzListPush(ppSlaves, std::string(slave).c_str()) < 0) return FRAME_FAIL(kNoMemory, -1);
  }
  return static_cast<int>(slaves.size());
}
FRAME_NO_EXCEPTIONS(-1)
