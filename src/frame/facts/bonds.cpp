// SPDX-License-Identifier: Apache-2.0
// The bonds of the kernel, as sysfs has them, and of Open vSwitch, which that driver knows nothing
// of, from their interface files.
#include "frame/facts/bonds.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/link.h"
#include "frame/facts/ovs.h"
#include "frame/model/bond_modes.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

namespace frame::facts {
namespace {

// Its lines are known by the name of the function that asks for a bond.
constexpr char kSource[] = "net_link_aggr_get";

using SlaveName = char[16];

int CompareSlaves(const void* a, const void* b) {
  return std::strncmp(static_cast<const char*>(a), static_cast<const char*>(b), sizeof(SlaveName));
}

// Did a partner answer the bond's LACP frames?
bool HasPartner(const std::string& bond) {
  constexpr std::string_view kLabel = "\tPartner Mac Address: ";
  LineReader lines(paths::ProcBond(bond));
  if (!lines.IsOpen()) return Fail(ZARNNETERR_NOT_FOUND, false, Place(kSource));
  while (auto line = lines.Next()) {
    if (!line->starts_with(kLabel)) continue;
    const std::string_view partner = Trimmed(line->substr(kLabel.size()));
    return !partner.empty() && partner != "00:00:00:00:00:00";
  }
  return false;
}

std::uint32_t ModeOf(std::string_view line) {
  const std::uint32_t mode = model::BondModeOfKernelLine(line);
  if (mode == ZARNBOND_NONE) {
    const std::string text(Trimmed(line));
    LOG_ERROR_AT(Place(kSource), "%s:%d Non-supported bonding mode [%s]", text.c_str());
  }
  return mode;
}

BondRead ReadKernelBond(const std::string& bond, ZARNLINKAGGROPT* record) {
  const auto slaves = KernelSlavesOf(bond);
  // A bond that cannot be read is not one that is not there: it would be created a second time.
  if (!slaves && Exists(paths::SysNet(bond, "/bonding/slaves"))) return BondRead::kFailed;
  if (!slaves || slaves->empty()) return BondRead::kDone;
  for (const std::string& slave : *slaves) {
    if (!AddSlave(slave.c_str(), record)) return BondRead::kFailed;
  }
  LineReader lines(paths::SysNet(bond, "/bonding/mode"));
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, BondRead::kFailed, Place(kSource));
  const auto line = lines.Next();
  if (!line) return Fail(ZARNNETERR_READ, BondRead::kFailed, Place(kSource));
  record->mode = ModeOf(*line);
  if (record->mode == ZARNBOND_8023AD) record->blNoPartner = HasPartner(bond) ? 0 : 1;
  return BondRead::kDone;
}

// Members that are gone from the system are passed over. So is a bond among the members: there is
// no such thing, and asking for its link would come back here.
bool AddPresentSlaves(std::string_view names, ZARNLINKAGGROPT* record) {
  for (const std::string_view word : SplitWords(names, " ")) {
    const std::string slave(word);
    if (OvsKindOf(slave) == ZARNOVS_BOND || !HasLink(slave)) continue;
    if (!AddSlave(slave.c_str(), record)) {
      LOG_ERROR_AT(Place(kSource), "%s:%d Failed to add the slave %s into ZARNLINKAGGROPT",
                   slave.c_str());
      return false;
    }
  }
  return true;
}

// A file that cannot be read has set its code already.
BondRead WithoutKey(const KeyValue& value) {
  if (!value.Unreadable()) SetError(ZARNNETERR_UNEXPECTED_CONTENT, Place(kSource));
  return BondRead::kNoOvsRecord;
}

BondRead ReadOvsBond(const std::string& bond, ZARNLINKAGGROPT* record) {
  constexpr std::size_t kValueSize = 1024;
  const std::string path = paths::Ifcfg(bond);
  const KeyValue slaves = ReadKey(path, keys::kSlaveList, kValueSize);
  if (!slaves.Found()) {
    // Not the key that is missing, but the text by which this failure is known.
    LOG_ERROR_AT(Place(kSource), "%s:%d Failed to get key [%s]", "BLOCK_CNT");
    return WithoutKey(slaves);
  }
  if (!AddPresentSlaves(Trimmed(slaves.text), record)) return BondRead::kNoOvsRecord;
  const KeyValue mode = ReadKey(path, keys::kBondMode, kValueSize);
  if (!mode.Found()) {
    LOG_ERROR_AT(Place(kSource), "%s:%d Failed to get key [%s]", keys::kBondMode);
    return WithoutKey(mode);
  }
  record->mode = model::BondModeOf(mode.text);
  return BondRead::kDone;
}

// The words of a one-line file of sysfs.
std::optional<std::vector<std::string>> WordsOf(LineReader* lines) {
  const auto line = lines->Next();
  if (!line) return std::nullopt;
  const auto words = SplitWords(*line);
  return std::vector<std::string>(words.begin(), words.end());
}

}  // namespace

std::optional<std::vector<std::string>> KernelBonds() {
  LineReader lines(paths::kBondingMasters);
  if (!lines.IsOpen()) return std::vector<std::string>{};  // no bonding driver, no bonds
  auto bonds = WordsOf(&lines);
  if (bonds || !lines.Failed()) return bonds ? bonds : std::vector<std::string>{};
  return Fail(ZARNNETERR_READ, std::nullopt, Place("net_link_aggr_enum"));
}

std::optional<std::vector<std::string>> KernelSlavesOf(const std::string& bond) {
  constexpr Place kAt("net_link_aggr_enum");
  if (IsUnfitName(bond.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt, kAt);
  LineReader lines(paths::SysNet(bond, "/bonding/slaves"));
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, std::nullopt, kAt);
  auto slaves = WordsOf(&lines);
  if (!slaves) return Fail(ZARNNETERR_READ, std::nullopt, kAt);
  return slaves;
}

BondRead ReadBond(const std::string& bond, ZARNLINKAGGROPT* record) {
  *record = ZARNLINKAGGROPT{};
  CopyText(bond, record->szName);
  if (OvsKindOf(bond) != ZARNOVS_BOND) return ReadKernelBond(bond, record);
  try {
    return ReadOvsBond(bond, record);
  } catch (const std::bad_alloc&) {
    LOG_ERROR_AT(Place(kSource), "%s:%d Failed to alloc memory.");
    return Fail(ZARNNETERR_NO_MEMORY, BondRead::kNoOvsRecord, Place(kSource));
  }
}

std::optional<std::vector<std::string>> SlavesOf(const std::string& bond) {
  ZARNLINKAGGROPT record{};
  if (ReadBond(bond, &record) != BondRead::kDone) return std::nullopt;
  std::vector<std::string> slaves;
  slaves.reserve(static_cast<std::size_t>(record.cSlave));
  for (int i = 0; i < record.cSlave; ++i)
    slaves.emplace_back(FieldText(record.rgszSlave[i]));
  return slaves;
}

bool AddSlave(const char* slave, ZARNLINKAGGROPT* record) {
  constexpr Place kAt("net_link_aggr_get");
  if (record->cSlave >= ZARNLINKAGGR_MAX_SLAVE) return Fail(ZARNNETERR_SLAVES_FULL, false, kAt);
  SlaveName name{};
  CopyText(slave, name);
  const auto count = static_cast<std::size_t>(record->cSlave);
  if (std::bsearch(name, record->rgszSlave, count, sizeof name, CompareSlaves) != nullptr) {
    return Fail(ZARNNETERR_EXISTS, false, kAt);
  }
  // Left by the search that found nothing. Callers go by the result alone.
  SetError(ZARNNETERR_NOT_FOUND, kAt);
  std::memcpy(record->rgszSlave[count], name, sizeof name);
  ++record->cSlave;
  std::qsort(record->rgszSlave, count + 1, sizeof name, CompareSlaves);
  return true;
}

}  // namespace frame::facts
