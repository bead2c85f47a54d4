// SPDX-License-Identifier: Apache-2.0
// A bond is created, changed or deleted: the interface files of the bond and its slaves, the lease
// that goes over to it, the restart of all of them, and the event of their rename.
#include <algorithm>
#include <cstring>
#include <string>
#include <unistd.h>
#include <utility>

#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/base/undo.h"
#include "frame/facts/bonds.h"
#include "frame/model/bond_modes.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/line_file.h"
#include "frame/os/shared_folder.h"
#include "virtual/bond_files.h"

using namespace frame;
using virtual_if::Names;

namespace {

enum class Kind { kCreate, kChange, kDelete };

Names SlavesOf(const ZARNLINKAGGROPT& record) {
  Names slaves;
  for (int i = 0; i < record.cSlave; ++i)
    slaves.emplace_back(FieldText(record.rgszSlave[i]));
  return slaves;
}

template <std::size_t N>
bool IsTerminated(const char (&field)[N]) {
  return std::memchr(field, '\0', N) != nullptr;
}

bool IsSlaveField(const char (&name)[16]) {
  return IsTerminated(name) && (IsEmpty(name) || !IsUnfitName(name));
}

// Can every name be an argument and a part of a path? Whether the record makes a bond is for the
// create step to say.
bool IsReadable(const ZARNLINKAGGROPT& record) {
  if (!IsTerminated(record.szName) || IsUnfitName(record.szName) ||
      record.mode > model::kLastMode) {
    return false;
  }
  if (record.mode == ZARNBOND_NONE) return true;  // its slaves are not looked at
  if (record.cSlave < 0 || record.cSlave > ZARNLINKAGGR_MAX_SLAVE) return false;
  for (int i = 0; i < record.cSlave; ++i) {
    if (!IsSlaveField(record.rgszSlave[i])) return false;
  }
  return true;
}

bool MakesABond(const ZARNLINKAGGROPT& record) {
  if (record.cSlave < 2 || record.mode == ZARNBOND_NONE || record.mode > model::kLastMode)
    return false;
  for (int i = 0; i < record.cSlave; ++i) {
    if (IsEmpty(record.rgszSlave[i])) return false;
  }
  return true;
}

bool RemoveOrLog(const std::string& path) {
  if (::unlink(path.c_str()) == 0) return true;
  LOG_ERROR("%s:%d remove file %s failed", path.c_str());
  return false;
}

// ---- the create step

// Everybody may write to the folder of the leases: what is not root's there is not copied, and
// names are changed only in the file that the copy has made.
void InheritLease(const std::string& slave, const std::string& bond) {
  const std::string from = paths::DhcpLease(slave);
  const std::string to = paths::DhcpLease(bond);
  if (Exists(from) && (!IsTrustedFile(from) || !ClaimFile(to))) return;
  if (RunStatus(paths::kCp, "-f", from, to) != 0 || !IsTrustedFile(to)) return;
  static_cast<void>(MakeAlike(to, from));
  static_cast<void>(ReplaceInFile(to, slave, bond));
}

// The bond inherits the first slave's address settings and its lease. A slave that has none is no
// reason to go without a bond.
void InheritFromFirstSlave(const std::string& slave, const std::string& bond) {
  const ErrorUnchanged ofBond;
  static_cast<void>(CopyFile(paths::Ifcfg(slave), paths::Ifcfg(bond)));
  InheritLease(slave, bond);
}

bool WriteBond(const ZARNLINKAGGROPT& record) {
  const char* const options = grgBondDesc[record.mode].szBondingOpts;
  if (options == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, false);  // a mode of Open vSwitch
  const std::string path = paths::Ifcfg(record.szName);
  KeyEdit edit;
  if (virtual_if::FixBootProto(path, edit.KeysToSet()) < 0) return false;
  edit.Set(keys::kDevice, record.szName).Set(keys::kOnBoot, "yes").Set(keys::kUserCtl, "no");
  edit.Set(keys::kBondingOpts, options);
  model::LeaveBond(&edit);
  return edit.WriteTo(path);
}

bool JoinAll(const Names& slaves, const std::string& bond) {
  return std::all_of(slaves.begin(), slaves.end(),
                     [&](const std::string& slave) { return virtual_if::JoinBond(slave, bond); });
}

bool Create(const ZARNLINKAGGROPT& record) {
  if (!MakesABond(record)) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  const std::string bond = record.szName;
  const std::string path = paths::Ifcfg(bond);
  const Names slaves = SlavesOf(record);
  const virtual_if::SavedFiles saved(slaves);
  virtual_if::DropSavedFiles(slaves);
  Undo undo;
  undo.Add([&] {
    saved.MoveBack();
    static_cast<void>(RemoveOrLog(path));
  });
  InheritFromFirstSlave(slaves.front(), bond);
  if (!WriteBond(record) || !JoinAll(slaves, bond)) return false;
  undo.Keep();
  for (const std::string& slave : slaves)
    static_cast<void>(RemoveOrLog(model::SavedPath(paths::Ifcfg(slave))));
  return true;
}

// ---- the change

bool Remove(const ZARNLINKAGGROPT& record) {
  return virtual_if::RemoveBond(record.szName, record.cSlave > 0 ? record.rgszSlave[0] : "");
}

// Where the present bond cannot be undone the new one is not tried.
bool CarryOut(Kind kind, const ZARNLINKAGGROPT& wanted, const ZARNLINKAGGROPT& present) {
  if (kind == Kind::kDelete) return Remove(wanted);
  return (kind == Kind::kCreate || Remove(present)) && Create(wanted);
}

// The network start script for the bond and its slaves.
PreparedCall StartScript(const char* action, const ZARNLINKAGGROPT& record) {
  Names arguments = {std::string(action), std::string(record.szName)};
  for (const std::string& slave : SlavesOf(record))
    arguments.push_back(slave);
  return {paths::kNetworkScript, std::move(arguments)};
}

// Its status does not matter.
void RunAnyway(const PreparedCall& call) {
  const ErrorUnchanged ofChange;
  static_cast<void>(call.Status());
}

// Whatever happens while the interfaces are stopped, they are started again.
int Restart(Kind kind, const ZARNLINKAGGROPT& wanted, const ZARNLINKAGGROPT& present) {
  const PreparedCall stop = StartScript("stop", wanted);
  const PreparedCall start = StartScript("start", wanted);
  RunAnyway(stop);
  const int result = NoThrow(-1, [&]() -> int { return CarryOut(kind, wanted, present) ? 0 : -1; });
  RunAnyway(start);
  return result;
}

// A restart that the rest of the appliance hears of, before and after: the bond takes the places of
// its slaves, or they take its.
int RestartWithEvent(Kind kind, const ZARNLINKAGGROPT& wanted, const ZARNLINKAGGROPT& present) {
  const Names bond = {wanted.szName};
  const Names slaves = SlavesOf(wanted);
  const bool create = kind == Kind::kCreate;
  return ipv4::WhileRenaming(ipv4::Renamed::kBond, create ? slaves : bond, create ? bond : slaves,
                             [&] { return Restart(kind, wanted, present); });
}

}  // namespace

int ZARNNetLinkAggrSet(ZARNLINKAGGROPT* pOpt) {
  return Boundary(-1, [&]() -> int {
    if (pOpt == nullptr || !IsReadable(*pOpt)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    ZARNLINKAGGROPT present{};
    if (facts::ReadBond(pOpt->szName, &present) != facts::BondRead::kDone) return -1;
    if (pOpt->mode == ZARNBOND_NONE) {
      pOpt->cSlave = present.cSlave;
      std::memcpy(pOpt->rgszSlave, present.rgszSlave, sizeof present.rgszSlave);
      return RestartWithEvent(Kind::kDelete, *pOpt, present);
    }
    if (present.mode == ZARNBOND_NONE) return RestartWithEvent(Kind::kCreate, *pOpt, present);
    if (std::memcmp(pOpt, &present, sizeof present) == 0) return 0;
    return Restart(Kind::kChange, *pOpt, present);
  });
}
