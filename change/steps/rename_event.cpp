// SPDX-License-Identifier: Apache-2.0
#include "steps/rename_event.h"

#include <memory>

#include <zarnnetsdk/ipv4.h>
#include <zarnsdk/zarnsdk.h>

#include "document/machine.h"
#include "frame/model/events.h"

namespace change {

bool WhileRenaming(const std::vector<std::string>& oldNames,
                   const std::vector<std::string>& newNames, const std::function<bool()>& work) {
  namespace events = frame::events;
  const Names origin(oldNames);
  const Names names(newNames);
  PKOPAPLUGIN plugin = nullptr;
  if (KOPAPluginSDKInit(events::kNet, events::kIfnameChange, &plugin) < 0) return false;
  const std::unique_ptr<KOPAPLUGIN, decltype(&KOPAPluginExit)> event(plugin, KOPAPluginExit);
  const auto tell = [&](int stage, int result) {
    if (KOPANetIFChgPluginSetArgs(event.get(), origin.Get(), names.Get(), result) == 0)
      static_cast<void>(KOPAPluginAction(stage, event.get()));
  };
  tell(ZARNNETSTAGE_BEFORE, 0);
  const bool done = work();
  tell(ZARNNETSTAGE_AFTER, done ? 0 : -1);
  return done;
}

}  // namespace change
