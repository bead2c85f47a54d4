// The event that interfaces take other interfaces' places.
#include "virtual/rename_event.h"

#include <zarnnetsdk/ipv4.h>

#include "frame/os/plugin_event.h"

namespace virtual_if {

RenameEvent::~RenameEvent() {
  if (handle_ != nullptr) KOPAPluginExit(handle_);
}

bool RenameEvent::Init() {
  return KOPAPluginSDKInit("net", "net/ifname_change", &handle_) >= 0;
}

bool RenameEvent::Before(const KOPACSZLIST* oldNames, const KOPACSZLIST* newNames) {
  return Tell(frame::kStageBefore, oldNames, newNames, 0);
}

bool RenameEvent::After(const KOPACSZLIST* oldNames, const KOPACSZLIST* newNames, int result) {
  if (KOPAPluginHasInit(handle_) == 0) return true;
  return Tell(frame::kStageAfter, oldNames, newNames, result);
}

bool RenameEvent::Tell(int stage, const KOPACSZLIST* oldNames, const KOPACSZLIST* newNames,
                       int result) {
  return KOPANetIFChgPluginSetArgs(handle_, oldNames, newNames, result) >= 0 &&
         KOPAPluginAction(stage, handle_) >= 0;
}

}  // namespace virtual_if
