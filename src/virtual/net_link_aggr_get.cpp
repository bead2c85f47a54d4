// One bond with its mode and slaves: of the kernel's driver from sysfs, of Open vSwitch, which that
// driver knows nothing of, from its interface file.
#include <cstdlib>
#include <cstring>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

constexpr uint32_t kMode8023ad = 2;
constexpr uint32_t kLastKernelMode = 5;
constexpr int kOvsBond = 2;
constexpr char kBondMode[] = "BOND_MODE";
constexpr char kSlaveList[] = "SLAVE_LIST";

using SlaveName = char[16];

int CompareSlaves(const void* a, const void* b) {
  return std::strncmp(static_cast<const char*>(a), static_cast<const char*>(b), sizeof(SlaveName));
}

void StartRecord(const char* bond, ZARNLINKAGGROPT* record) {
  *record = ZARNLINKAGGROPT{};
  CopyText(bond, record->szName);
}

// The mode id of a line such as "802.3ad 4"; 0 for a mode that bonds of this appliance never have.
uint32_t ModeOf(std::string_view line) {
  for (uint32_t mode = 1; mode <= kLastKernelMode; ++mode) {
    const ZARNBONDDESC& desc = grgBondDesc[mode];
    if (line.starts_with(Format("%s %s", desc.szName, desc.szKernelMode))) return mode;
  }
  const std::string text(Trimmed(line));
  LOG_ERROR("%s:%d Non-supported bonding mode [%s]", text.c_str());
  return 0;
}

// Did a partner answer the bond's LACP frames?
bool HasPartner(const char* bond) {
  constexpr std::string_view kLabel = "\tPartner Mac Address: ";
  LineReader lines(Format("%s/%s", "/proc/net/bonding/", bond));
  if (!lines.IsOpen()) {
    SetError(ZARNNETERR_NOT_FOUND);
    return false;
  }
  while (auto line = lines.Next()) {
    if (!line->starts_with(kLabel)) continue;
    const std::string_view partner = Trimmed(line->substr(kLabel.size()));
    return !partner.empty() && partner != "00:00:00:00:00:00";
  }
  return false;
}

bool AddSlaves(const StringList& slaves, ZARNLINKAGGROPT* record) {
  for (int i = 0; i < slaves.Count(); ++i) {
    if (ZARNNetLinkAggrOptSlsaveAdd(record, slaves[i]) < 0) return false;
  }
  return true;
}

int GetKernelBond(const char* bond, ZARNLINKAGGROPT* record) {
  StartRecord(bond, record);
  StringList slaves(1024);
  if (ZARNNetLinkAggrPhyGet(bond, slaves.Out()) <= 0) return 0;
  if (!AddSlaves(slaves, record)) return -1;
  LineReader lines(paths::SysNet(bond, "/bonding/mode"));
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, -1);
  const auto line = lines.Next();
  if (!line) return Fail(ZARNNETERR_READ, -1);
  record->mode = ModeOf(*line);
  if (record->mode == kMode8023ad) record->blNoPartner = HasPartner(bond) ? 0 : 1;
  return 0;
}

// Members that are gone from the system are passed over. So is a bond among the members: there is
// no such thing, and asking for its link would come back here.
bool AddPresentSlaves(std::string_view names, ZARNLINKAGGROPT* record) {
  for (const std::string_view word : SplitWords(names, " ")) {
    const std::string slave(word);
    if (KOPANetOVSIfIsMaster(slave.c_str()) == kOvsBond) continue;
    if (ZARNNetIfIsLink(slave.c_str()) < 0) continue;
    if (ZARNNetLinkAggrOptSlsaveAdd(record, slave.c_str()) < 0) {
      LOG_ERROR("%s:%d Failed to add the slave %s into ZARNLINKAGGROPT", slave.c_str());
      return false;
    }
  }
  return true;
}

int GetOvsBond(const char* bond, ZARNLINKAGGROPT* record) try {
  constexpr std::size_t kValueSize = 1024;
  StartRecord(bond, record);
  const std::string path = paths::Ifcfg(bond);
  const KeyValue slaves = ReadKey(path, kSlaveList, kValueSize);
  if (!slaves.Found()) {
    // Not the key that is missing, but the text by which this failure is known.
    LOG_ERROR("%s:%d Failed to get key [%s]", "BLOCK_CNT");
    return 1;
  }
  if (!AddPresentSlaves(Trimmed(slaves.text), record)) return 1;
  const KeyValue mode = ReadKey(path, kBondMode, kValueSize);
  if (!mode.Found()) {
    LOG_ERROR("%s:%d Failed to get key [%s]", kBondMode);
    return 1;
  }
  record->mode = ZARNNetLinkAggrStringToMode(mode.text.c_str());
  return 0;
} catch (...) {
  LOG_ERROR("%s:%d Failed to alloc memory.");
  return Fail(ZARNNETERR_NO_MEMORY, 1);
}

}  // namespace

int ZARNNetLinkAggrGet(const char* szBond, ZARNLINKAGGROPT* pOpt) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szBond) || pOpt == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return KOPANetOVSIfIsMaster(szBond) == kOvsBond ? GetOvsBond(szBond, pOpt)
                                                    : GetKernelBond(szBond, pOpt);
  });
}

int ZARNNetLinkAggrOptSlsaveAdd(ZARNLINKAGGROPT* pOpt, const char* szSlave) {
  return Boundary(-1, [&]() -> int {
    if (pOpt == nullptr || IsEmpty(szSlave) || pOpt->cSlave < 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (pOpt->cSlave >= ZARNLINKAGGR_MAX_SLAVE) return Fail(ZARNNETERR_SLAVES_FULL, -1);
    SlaveName name{};
    CopyText(szSlave, name);
    const auto count = static_cast<std::size_t>(pOpt->cSlave);
    if (std::bsearch(name, pOpt->rgszSlave, count, sizeof name, CompareSlaves) != nullptr) {
      return Fail(ZARNNETERR_EXISTS, -1);
    }
    // Left by the search that found nothing. Callers go by the result alone.
    SetError(ZARNNETERR_NOT_FOUND);
    std::memcpy(pOpt->rgszSlave[count], name, sizeof name);
    ++pOpt->cSlave;
    std::qsort(pOpt->rgszSlave, count + 1, sizeof name, CompareSlaves);
    return 0;
  });
}
