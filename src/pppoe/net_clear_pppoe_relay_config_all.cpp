// Deletes the relay settings of every interface.
#include <algorithm>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

void Delete(const char* name) {
  const std::string path = std::string(paths::kPppoeRelayFolder) + name;
  if (::unlink(path.c_str()) != 0) LOG_ERROR("%s:%d Failed to unlink [%s]", path.c_str());
}

// The path without the slash that would hide what is no folder.
bool IsThere() {
  std::string path(paths::kPppoeRelayFolder);
  path.pop_back();
  return KOPACFileExist(path.c_str()) == 1;
}

}  // namespace

int ZARNNetClearPPPoERelayConfigAll(void) {
  return Boundary(
      -1,
      [&]() -> int {
        StringList names(pppoe::kMaxRelays);
        if (!IsThere()) return 0;
        if (KOPACFileCheckDir(paths::kPppoeRelayFolder) != 1) return -1;
        if (KOPACFileEnumDir(paths::kPppoeRelayFolder, nullptr, names.Out(), 0) < 0) {
          LOG_ERROR("%s:%d Failed to enum [%s]", paths::kPppoeRelayFolder);
          return -1;
        }
        const int count = std::min(names.Count(), pppoe::kMaxRelays);
        for (int i = 0; i < count; ++i)
          Delete(names[i]);
        return 0;
      },
      [&] { LOG_ERROR("%s:%d Failed to alloc memory for list"); });
}
