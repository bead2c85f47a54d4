// One interface's file becomes that of a bond's slave, or that of an interface of its own again.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

void Join(const char* master, KeyEdit* edit) {
  edit->Set(keys::kUserCtl, "no").Set(keys::kMaster, master).Set(keys::kSlave, "yes");
}

bool Release(const std::string& path, KeyEdit* edit) {
  edit->Drop(keys::kUserCtl).Drop(keys::kBondingOpts).Drop(keys::kMaster).Drop(keys::kSlave);
  return ZARNNetLinkAggrConfUpdateBootProto(path.c_str(), edit->KeysToSet()) >= 0;
}

}  // namespace

int ZARNNetLinkAggrConfSetSlave(const char* szSlave, int blJoin, const char* szMaster) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szSlave)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (blJoin != 0 && IsUnfitName(szMaster)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(szSlave);
    KeyEdit edit;
    edit.Set(keys::kDevice, szSlave);
    if (blJoin != 0) {
      Join(szMaster, &edit);
    } else if (!Release(path, &edit)) {
      return Fail(ZARNNETERR_NO_MEMORY, -1);
    }
    // An interface that never had a file has nothing to go back to.
    static_cast<void>(RunStatus(paths::kCp, "-f", path, path + model::kSavedSuffix));
    return edit.WriteTo(path) ? 0 : -1;
  });
}
