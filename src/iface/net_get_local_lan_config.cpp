// Which interfaces the factory settings make the local LAN.
#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/key_file.h"
#include "frame/log.h"
#include "frame/net_dev.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

int KOPANetGetLocalLanConfig(PKOPACSZLIST* ppList) try {
  if (ppList == nullptr || *ppList == nullptr) return FRAME_FAIL(kBadParameter, -1);
  constexpr std::size_t kLongest = 4096;
  const KeyValue setting = ReadKey(paths::kFactoryInfo, "local_lan", kLongest);
  if (setting.Unreadable()) {
    LOG_ERROR("%s:%d Failed to read %s.", paths::kFactoryInfo);
    return FRAME_FAIL(kOpen, -1);
  }
  const auto names = SplitWords(setting.text, " \t,");
  if (names.size() > kMaxInterfaces) {
    LOG_ERROR("%s:%d local lan exceed NUM_MAXIFACES");
    return FRAME_FAIL(kTableFull, -1);
  }
  for (const std::string_view name : names) {
    if (KOPACSzListPush(ppList, std::string(name).c_str()) < 0) return FRAME_FAIL(kNoMemory, -1);
  }
  return static_cast<int>(names.size());
}
FRAME_NO_EXCEPTIONS(-1)
