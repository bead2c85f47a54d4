// SPDX-License-Identifier: Apache-2.0
// A bond's interface file goes: its settings pass to one of its slaves, and all of them become
// interfaces of their own.
#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/base/undo.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/folder.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "virtual/bond_files.h"

using namespace frame;
using virtual_if::Names;

namespace {

constexpr std::size_t kNameSize = sizeof(ZARNLINKAGGROPT::szName);
constexpr std::size_t kPrefixLength = sizeof paths::kIfcfgPrefix - 1;

bool AddDeviceOf(const std::string& path, Names* slaves) {
  const KeyValue device = ReadKey(path, keys::kDevice, kNameSize);
  if (device.length == 0) {
    LOG_ERROR("%s:%d %s don't have key \"DEVICE\"\n", path.c_str());
    return Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
  }
  if (device.Unreadable() || IsUnfitName(device.text.c_str())) {
    LOG_ERROR("%s:%d get key \"DEVICE\" from %s fail\n", path.c_str());
    return device.Unreadable() ? false : Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
  }
  slaves->push_back(device.text);
  return true;
}

bool AddIfSlave(const std::string& path, const std::string& bond, Names* slaves) {
  const KeyValue master = ReadKey(path, keys::kMaster, kNameSize);
  if (master.Unreadable()) {
    LOG_ERROR("%s:%d get key \"MASTER\" from %s fail\n", path.c_str());
    return false;
  }
  return master.text != bond || AddDeviceOf(path, slaves);
}

// A call that was killed has left the bond's own settings in the heir's file. Another copy of them,
// which somebody has made, is no interface's.
bool IsHeirOfKilled(const std::string& path, const std::string& bond) {
  return path.starts_with(paths::kIfcfgPrefix) && path != paths::Ifcfg(bond) &&
         KeyIs(path, keys::kDevice, bond.c_str()) &&
         InetSocket().Flags(path.substr(kPrefixLength)).has_value();
}

// It has released the heir already when the file from before that says so.
bool WasReleased(const std::string& heir, const std::string& bond, const Names& slaves) {
  return !heir.empty() && std::find(slaves.begin(), slaves.end(), heir) == slaves.end() &&
         KeyIs(model::SavedPath(paths::Ifcfg(heir)), keys::kDevice, bond.c_str());
}

// The interfaces whose files name the bond as their master. Backups are no interfaces' files.
std::optional<Names> ParseSlaves(const std::string& bond) {
  Names slaves;
  const auto files = PathsLike(Format("%s/*", paths::kIfcfgFolder));
  if (!files || !IsFolder(paths::kIfcfgFolder)) return Fail(ZARNNETERR_OPEN, std::nullopt);
  for (const std::string& path : *files) {
    if (path.ends_with(model::kSavedSuffix)) continue;
    if (!AddIfSlave(path, bond, &slaves)) return std::nullopt;
    if (IsHeirOfKilled(path, bond)) slaves.push_back(path.substr(kPrefixLength));
  }
  return slaves;
}

std::string AddressOfBond(const std::string& bond) {
  const auto address = ipv4::ConfiguredAddress(bond);
  if (!address) LOG_ERROR("%s:%d get IP of %s failed", bond.c_str());
  return address.value_or("");
}

// Does the slave carry this address? Nothing when its own cannot be read.
std::optional<bool> HasAddress(const std::string& slave, const std::string& address) {
  const auto own = ipv4::ConfiguredAddress(slave);
  if (own) return address == *own;
  LOG_ERROR("%s:%d get IP on %s failed", slave.c_str());
  return std::nullopt;
}

bool TakeAddress(const std::string& slave) {
  const std::string path = paths::Ifcfg(slave);
  if (SetKey(path, keys::kBootProto, model::kNoAddress)) return true;
  LOG_ERROR("%s:%d set %s %s=%s failed", path.c_str(), keys::kBootProto, model::kNoAddress);
  return Fail(ZARNNETERR_NO_MEMORY, false);
}

// The bond's address lives on at the heir alone. The release makes "none" a "dhcp", so that it is
// written behind it once more.
bool ReleaseWithoutAddress(const std::string& slave) {
  return TakeAddress(slave) && virtual_if::LeaveBond(slave) && TakeAddress(slave);
}

bool ReleaseAll(const Names& slaves, const std::string& heir, const std::string& address) {
  for (const std::string& slave : slaves) {
    bool shared = false;
    if (!address.empty() && !heir.empty() && slave != heir) {
      const auto has = HasAddress(slave, address);
      if (!has) return false;
      shared = *has;
    }
    if (!(shared ? ReleaseWithoutAddress(slave) : virtual_if::LeaveBond(slave))) return false;
  }
  return true;
}

bool Inherit(const std::string& bondPath, const std::string& heir) {
  if (heir.empty() || CopyFile(bondPath, paths::Ifcfg(heir))) return true;
  return Fail(ZARNNETERR_COMMAND, false);
}

// What each file holds now. The copies beside them are made in the course of the release: of the
// heir, and of a slave that shares the bond's address, when the file has changed already.
std::vector<Snapshot> SnapshotsOf(const Names& slaves, const std::string& heir) {
  std::vector<Snapshot> snapshots;
  for (const std::string& slave : slaves)
    snapshots.emplace_back(paths::Ifcfg(slave));
  if (!heir.empty()) snapshots.emplace_back(paths::Ifcfg(heir));
  return snapshots;
}

bool Remove(const std::string& bond, const Names& slaves, const std::string& heir) {
  const std::string path = paths::Ifcfg(bond);
  const virtual_if::SavedFiles saved(slaves);
  const std::vector<Snapshot> before = SnapshotsOf(slaves, heir);
  virtual_if::DropSavedFiles(slaves);
  Undo undo;
  undo.Add([&] {
    saved.MoveBack();
    for (const Snapshot& file : before)
      static_cast<void>(file.PutBack());  // the call has failed already, and said why
  });
  if (!Inherit(path, heir) || !ReleaseAll(slaves, heir, AddressOfBond(bond))) return false;
  if (::unlink(path.c_str()) != 0)
    return Fail(errno == ENOENT ? ZARNNETERR_NOT_FOUND : ZARNNETERR_REFUSED, false);
  undo.Keep();
  return true;
}

}  // namespace

bool virtual_if::RemoveBond(const std::string& bond, std::string heir) {
  auto slaves = ParseSlaves(bond);
  if (!slaves) {
    LOG_ERROR("%s:%d parse slaves from etc/sysconfig/network-script\n");
    return false;
  }
  if (heir.empty() && !slaves->empty()) heir = slaves->front();
  if (WasReleased(heir, bond, *slaves)) slaves->push_back(heir);
  return Remove(bond, *slaves, heir);
}

int ZARNNetLinkAggrConfDel(ZARNLINKAGGROPT* pOpt) {
  return Boundary(-1, [&]() -> int {
    if (pOpt == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string bond(FieldText(pOpt->szName));
    const std::string heir(pOpt->cSlave > 0 ? FieldText(pOpt->rgszSlave[0]) : "");
    if (IsUnfitName(bond.c_str()) || !FitsKernel(bond) ||
        (pOpt->cSlave > 0 && IsUnfitName(heir.c_str()))) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return virtual_if::RemoveBond(bond, heir) ? 0 : -1;
  });
}
