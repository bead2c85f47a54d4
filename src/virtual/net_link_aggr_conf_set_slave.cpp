// One interface's file becomes that of a bond's slave, or that of an interface of its own again.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/command.h"
#include "frame/error.h"
#include "frame/key_file.h"
#include "frame/paths.h"
#include "frame/text.h"
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

int ZARNNetLinkAggrConfSetSlave(const char* szSlave, int blJoin, const char* szMaster) try {
  if (IsUnfitName(szSlave)) return FRAME_FAIL(kBadParameter, -1);
  if (blJoin != 0 && IsUnfitName(szMaster)) return FRAME_FAIL(kBadParameter, -1);
  const std::string path = paths::Ifcfg(szSlave);
  KeyEdit edit;
  edit.Set(kDevice, szSlave);
  if (blJoin != 0) {
    Join(szMaster, &edit);
  } else if (!Release(path, &edit)) {
    return FRAME_FAIL(kNoMemory, -1);
  }
  // An interface that never had a file has nothing to go back to.
  static_cast<void>(RunStatus(paths::kCp, "-f", path.c_str(), BackupOf(path).c_str()));
  return edit.WriteTo(path) ? 0 : -1;
}
FRAME_NO_EXCEPTIONS(-1)
