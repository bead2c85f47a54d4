// SPDX-License-Identifier: Apache-2.0
// Brings every relay process in line with the settings of its interface.
#include <algorithm>
#include <cerrno>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/folder.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

// The interfaces with settings, as many as are served.
std::optional<std::vector<std::string>> Relays() {
  constexpr mode_t kFolderMode = 0754;  // unlike the folder that settings make
  if (!pppoe::MakeRelayFolder(kFolderMode)) {
    LOG_ERROR("%s:%d Generat directory [%s] failed(%d)", paths::kPppoeRelayFolder, errno);
    return std::nullopt;
  }
  auto names = EntriesOf(paths::kPppoeRelayFolder);
  if (names && names->size() > pppoe::kMaxRelays) names->resize(pppoe::kMaxRelays);
  return names;
}

}  // namespace

int ZARNNetApplyPPPoERelayConfigAll(void) {
  return Boundary(-1, [&]() -> int {
    const auto names = Relays();
    if (!names) {
      LOG_ERROR("%s:%d Failed to get interfaces' config");
      return -1;
    }
    const bool all = std::all_of(names->begin(), names->end(), [](const std::string& ifname) {
      return pppoe::ApplyRelay(ifname.c_str());
    });
    return all ? 0 : -1;
  });
}
