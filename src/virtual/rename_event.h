// The event that interfaces take other interfaces' places: a bond those of its members, or one name
// another's. It is told before the change and after it.
#pragma once

#include <zarncore/zarncore.h>
#include <zarnsdk/zarnsdk.h>

namespace virtual_if {

// Releases the plugin SDK when its scope ends. Every step answers false when the SDK refuses, with
// its reason in the error state; the caller logs it, so that the line names the caller's place.
class RenameEvent {
 public:
  RenameEvent() = default;
  ~RenameEvent();
  RenameEvent(const RenameEvent&) = delete;
  RenameEvent& operator=(const RenameEvent&) = delete;

  [[nodiscard]] bool Init();
  [[nodiscard]] bool Before(const KOPACSZLIST* oldNames, const KOPACSZLIST* newNames);
  // Does nothing where Init() failed.
  [[nodiscard]] bool After(const KOPACSZLIST* oldNames, const KOPACSZLIST* newNames, int result);

 private:
  [[nodiscard]] bool Tell(int stage, const KOPACSZLIST* oldNames, const KOPACSZLIST* newNames,
                          int result);

  PKOPAPLUGIN handle_ = nullptr;
};

}  // namespace virtual_if
