// Brings every relay process in line with the settings of its interface.
#include <algorithm>
#include <cerrno>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

bool List(StringList* names) {
  constexpr mode_t kFolderMode = 0754;  // unlike the folder that settings make
  if (!pppoe::MakeRelayFolder(kFolderMode)) {
    LOG_ERROR("%s:%d Generat directory [%s] failed(%d)", paths::kPppoeRelayFolder, errno);
    return false;
  }
  return KOPACFileEnumDir(paths::kPppoeRelayFolder, nullptr, names->Out(), 0) >= 0;
}

}  // namespace

int ZARNNetApplyPPPoERelayConfigAll(void) {
  return Boundary(-1, [&]() -> int {
    StringList names(pppoe::kMaxRelays);
    if (!List(&names)) {
      LOG_ERROR("%s:%d Failed to get interfaces' config");
      return -1;
    }
    const int count = std::min(names.Count(), pppoe::kMaxRelays);
    for (int i = 0; i < count; ++i) {
      if (ZARNNetApplyPPPoERelayConfig(names[i]) < 0) return -1;
    }
    return 0;
  });
}
