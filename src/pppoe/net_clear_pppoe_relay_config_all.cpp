// SPDX-License-Identifier: Apache-2.0
// Deletes the relay settings of every interface.
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/folder.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

void Delete(const std::string& name) {
  const std::string path = paths::kPppoeRelayFolder + name;
  if (::unlink(path.c_str()) != 0) LOG_ERROR("%s:%d Failed to unlink [%s]", path.c_str());
}

// The path without the slash that would hide what is no folder.
bool IsThere() {
  std::string path(paths::kPppoeRelayFolder);
  path.pop_back();
  return Exists(path);
}

}  // namespace

int ZARNNetClearPPPoERelayConfigAll(void) {
  return Boundary(
      -1,
      [&]() -> int {
        if (!IsThere()) return 0;
        if (!IsFolder(paths::kPppoeRelayFolder)) return Fail(ZARNNETERR_UNEXPECTED_CONTENT, -1);
        auto names = EntriesOf(paths::kPppoeRelayFolder);
        if (!names) {
          LOG_ERROR("%s:%d Failed to enum [%s]", paths::kPppoeRelayFolder);
          return -1;
        }
        if (names->size() > pppoe::kMaxRelays) names->resize(pppoe::kMaxRelays);
        for (const std::string& name : *names)
          Delete(name);
        return 0;
      },
      [&] { LOG_ERROR("%s:%d Failed to alloc memory for list"); });
}
