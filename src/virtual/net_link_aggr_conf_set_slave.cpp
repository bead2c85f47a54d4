// SPDX-License-Identifier: Apache-2.0
// One interface's file becomes that of a bond's slave, or that of an interface of its own again.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"
#include "virtual/bond_files.h"

using namespace frame;

namespace {

bool KeepAndWrite(const std::string& path, const KeyEdit& edit) {
  model::KeepSaved(path);
  return edit.WriteTo(path);
}

}  // namespace

bool virtual_if::JoinBond(const std::string& slave, const std::string& bond) {
  KeyEdit edit;
  edit.Set(keys::kDevice, slave.c_str());
  model::JoinBond(&edit, bond.c_str());
  return KeepAndWrite(paths::Ifcfg(slave), edit);
}

bool virtual_if::LeaveBond(const std::string& slave) {
  const std::string path = paths::Ifcfg(slave);
  KeyEdit edit;
  edit.Set(keys::kDevice, slave.c_str()).Drop(keys::kUserCtl).Drop(keys::kBondingOpts);
  model::LeaveBond(&edit);
  return FixBootProto(path, edit.KeysToSet()) >= 0 && KeepAndWrite(path, edit);
}

int ZARNNetLinkAggrConfSetSlave(const char* szSlave, int blJoin, const char* szMaster) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szSlave) || (blJoin != 0 && IsUnfitName(szMaster))) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const bool done =
        blJoin != 0 ? virtual_if::JoinBond(szSlave, szMaster) : virtual_if::LeaveBond(szSlave);
    return done ? 0 : -1;
  });
}
