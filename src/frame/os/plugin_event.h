// SPDX-License-Identifier: Apache-2.0
// One event of the plugin facility, released when its scope ends.
#pragma once

#include <zarnnetsdk/ipv4.h>  // the stages
#include <zarnsdk/zarnsdk.h>

namespace frame {

// Each operation answers false when the plugin SDK refuses.
class PluginEvent {
 public:
  PluginEvent() = default;
  ~PluginEvent() {
    if (handle_ != nullptr) KOPAPluginExit(handle_);
  }
  PluginEvent(const PluginEvent&) = delete;
  PluginEvent& operator=(const PluginEvent&) = delete;

  [[nodiscard]] bool Init(const char* category, const char* event) {
    return KOPAPluginSDKInit(category, event, &handle_) >= 0;
  }
  [[nodiscard]] bool IsUsable() const { return KOPAPluginHasInit(handle_) != 0; }
  [[nodiscard]] bool Set(const char* name, const char* value) {
    return KOPAPluginSetArg(handle_, name, value) >= 0;
  }
  [[nodiscard]] bool Set(const char* name, int value) {
    return KOPAPluginSetArgByInt(handle_, name, value) >= 0;
  }
  // For the functions of the C interface, which take the SDK's type.
  [[nodiscard]] PKOPAPLUGIN Handle() const { return handle_; }
  // The stage is a ZARNNETSTAGE_...
  [[nodiscard]] bool Fire(int stage) { return KOPAPluginAction(stage, handle_) >= 0; }

 private:
  PKOPAPLUGIN handle_ = nullptr;
};

}  // namespace frame
