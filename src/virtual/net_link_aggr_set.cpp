// A bond is created, changed or deleted: the interface files of the bond and its slaves, the lease
// that goes over to it, the restart of all of them, and the event of their rename.
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

constexpr uint32_t kLastMode = 8;

using Names = std::vector<std::string>;

Names SlavesOf(const ZARNLINKAGGROPT& record) {
  return {record.rgszSlave, record.rgszSlave + record.cSlave};
}

enum class Kind { kCreate, kChange, kDelete };

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
  if (!IsTerminated(record.szName) || IsUnfitName(record.szName) || record.mode > kLastMode) {
    return false;
  }
  if (record.mode == 0) return true;  // its slaves are not looked at
  if (record.cSlave < 0 || record.cSlave > ZARNLINKAGGR_MAX_SLAVE) return false;
  for (int i = 0; i < record.cSlave; ++i) {
    if (!IsSlaveField(record.rgszSlave[i])) return false;
  }
  return true;
}

bool MakesABond(const ZARNLINKAGGROPT& record) {
  if (record.cSlave < 2 || record.mode == 0 || record.mode > kLastMode) return false;
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

// The files of a bond in the making. They go back to what they were unless all of it was done.
class BondFiles {
 public:
  explicit BondFiles(const ZARNLINKAGGROPT& record) : record_(record) {}
  ~BondFiles() {
    if (!kept_) Restore();
  }
  BondFiles(const BondFiles&) = delete;
  BondFiles& operator=(const BondFiles&) = delete;
  void Keep();

 private:
  void Restore() const;

  const ZARNLINKAGGROPT& record_;
  bool kept_ = false;
};

void BondFiles::Keep() {
  kept_ = true;
  for (int i = 0; i < record_.cSlave; ++i) {
    static_cast<void>(RemoveOrLog(paths::Ifcfg(record_.rgszSlave[i]) + model::kSavedSuffix));
  }
}

void BondFiles::Restore() const {
  for (int i = 0; i < record_.cSlave; ++i) {
    const std::string path = paths::Ifcfg(record_.rgszSlave[i]);
    static_cast<void>(RunStatus(paths::kMv, "-f", path + model::kSavedSuffix, path));
  }
  static_cast<void>(RemoveOrLog(paths::Ifcfg(record_.szName)));
}

// The bond inherits the first slave's address settings and its lease. A slave that has none is no
// reason to go without a bond.
void InheritFromFirstSlave(const ZARNLINKAGGROPT& record) {
  const char* const slave = record.rgszSlave[0];
  const std::string lease = paths::DhcpLease(record.szName);
  static_cast<void>(RunStatus(paths::kCp, "-f", paths::Ifcfg(slave), paths::Ifcfg(record.szName)));
  static_cast<void>(RunStatus(paths::kCp, "-f", paths::DhcpLease(slave), lease));
  static_cast<void>(KOPACFileReplaceSubStr(lease.c_str(), slave, record.szName));
}

bool WriteBond(const ZARNLINKAGGROPT& record) {
  const char* const options = grgBondDesc[record.mode].szBondingOpts;
  if (options == nullptr) return false;  // a mode of Open vSwitch
  const std::string path = paths::Ifcfg(record.szName);
  KeyEdit edit;
  if (ZARNNetLinkAggrConfUpdateBootProto(path.c_str(), edit.KeysToSet()) < 0) return false;
  edit.Set(keys::kDevice, record.szName).Set(keys::kOnBoot, "yes").Set(keys::kUserCtl, "no");
  edit.Set(keys::kBondingOpts, options).Drop(keys::kMaster).Drop(keys::kSlave);
  return edit.WriteTo(path);
}

bool JoinSlaves(const ZARNLINKAGGROPT& record) {
  for (int i = 0; i < record.cSlave; ++i) {
    if (ZARNNetLinkAggrConfSetSlave(record.rgszSlave[i], 1, record.szName) != 0) return false;
  }
  return true;
}

// The interfaces are stopped meanwhile: whatever happens here, they are to be started again.
int Create(const ZARNLINKAGGROPT& record) {
  return Boundary(-1, [&]() -> int {
    if (!MakesABond(record)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    BondFiles files(record);
    InheritFromFirstSlave(record);
    if (!WriteBond(record) || !JoinSlaves(record)) return -1;
    files.Keep();
    return 0;
  });
}

// ---- the change

// Where the present bond cannot be undone the new one is not tried.
int CarryOut(Kind kind, ZARNLINKAGGROPT* wanted, ZARNLINKAGGROPT* present) {
  if (kind == Kind::kDelete) return ZARNNetLinkAggrConfDel(wanted);
  if (kind == Kind::kChange && ZARNNetLinkAggrConfDel(present) != 0) return -1;
  return Create(*wanted);
}

// The network start script for the bond and its slaves. Its arguments are collected before the
// interfaces stop.
class StartScript {
 public:
  explicit StartScript(const ZARNLINKAGGROPT& record) {
    arguments_ = {paths::kNetworkScript, nullptr, record.szName};
    for (int i = 0; i < record.cSlave; ++i)
      arguments_.push_back(record.rgszSlave[i]);
    arguments_.push_back(nullptr);
  }
  void Run(const char* action) {
    constexpr int kWait = 1;
    arguments_[1] = action;
    static_cast<void>(KOPACExecv(paths::kNetworkScript, arguments_.data(), kWait));
  }

 private:
  std::vector<const char*> arguments_;
};

int Restart(Kind kind, ZARNLINKAGGROPT* wanted, ZARNLINKAGGROPT* present) {
  StartScript script(*wanted);
  script.Run("stop");
  const int result = CarryOut(kind, wanted, present);
  script.Run("start");
  return result;
}

// A restart that the rest of the appliance hears of, before and after: the bond takes the places of
// its slaves, or they take its.
int RestartWithEvent(Kind kind, ZARNLINKAGGROPT* wanted, ZARNLINKAGGROPT* present) {
  const Names bond = {wanted->szName};
  const Names slaves = SlavesOf(*wanted);
  const bool create = kind == Kind::kCreate;
  return ipv4::WhileRenaming(ipv4::Renamed::kBond, create ? slaves : bond, create ? bond : slaves,
                             [&] { return Restart(kind, wanted, present); });
}

}  // namespace

int ZARNNetLinkAggrSet(ZARNLINKAGGROPT* pOpt) {
  return Boundary(-1, [&]() -> int {
    if (pOpt == nullptr || !IsReadable(*pOpt)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    ZARNLINKAGGROPT present{};
    if (ZARNNetLinkAggrGet(pOpt->szName, &present) != 0) return -1;
    if (pOpt->mode == 0) {
      pOpt->cSlave = present.cSlave;
      std::memcpy(pOpt->rgszSlave, present.rgszSlave, sizeof present.rgszSlave);
      return RestartWithEvent(Kind::kDelete, pOpt, &present);
    }
    if (present.mode == 0) return RestartWithEvent(Kind::kCreate, pOpt, &present);
    if (std::memcmp(pOpt, &present, sizeof present) == 0) return 0;
    return Restart(Kind::kChange, pOpt, &present);
  });
}
