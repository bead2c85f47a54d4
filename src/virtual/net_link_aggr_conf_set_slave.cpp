// One interface's file becomes that of a bond's slave, or that of an interface of its own again.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"
#include "virtual/interface_keys.h"

using namespace frame;
using namespace virtual_if;

namespace {

void Join(const char* master, KeyEdit* edit) {
  edit->Set(kUserCtl, "no").Set(kMaster, master).Set(kSlave, "yes");
}

bool Release(const std::string& path, KeyEdit* edit) {
  edit->Drop(kUserCtl).Drop(kBondingOpts).Drop(kMaster).Drop(kSlave);
  return ZARNNetLinkAggrConfUpdateBootProto(path.c_str(), edit->KeysToSet()) >= 0;
}

}  // namespace

int ZARNNetLinkAggrConfSetSlave(const char* szSlave, int blJoin, const char* szMaster) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szSlave)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (blJoin != 0 && IsUnfitName(szMaster)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(szSlave);
    KeyEdit edit;
    edit.Set(kDevice, szSlave);
    if (blJoin != 0) {
      Join(szMaster, &edit);
    } else if (!Release(path, &edit)) {
      return Fail(ZARNNETERR_NO_MEMORY, -1);
    }
    // An interface that never had a file has nothing to go back to.
    static_cast<void>(RunStatus(paths::kCp, "-f", path.c_str(), BackupOf(path).c_str()));
    return edit.WriteTo(path) ? 0 : -1;
  });
}
