// SPDX-License-Identifier: Apache-2.0
// Which interfaces the factory settings make the local LAN.
#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/net_dev.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"

using namespace frame;

int KOPANetGetLocalLanConfig(PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    if (ppList == nullptr || *ppList == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    constexpr std::size_t kLongest = 4096;
    const KeyValue setting = ReadKey(paths::kFactoryInfo, "local_lan", kLongest);
    if (setting.Unreadable()) {
      LOG_ERROR("%s:%d Failed to read %s.", paths::kFactoryInfo);
      return Fail(ZARNNETERR_OPEN, -1);
    }
    const auto names = SplitWords(setting.text, " \t,");
    if (names.size() > facts::kMaxInterfaces) {
      LOG_ERROR("%s:%d local lan exceed NUM_MAXIFACES");
      return Fail(ZARNNETERR_TABLE_FULL, -1);
    }
    for (const std::string_view name : names) {
      if (KOPACSzListPush(ppList, std::string(name).c_str()) < 0)
        return Fail(ZARNNETERR_NO_MEMORY, -1);
    }
    return static_cast<int>(names.size());
  });
}
