// SPDX-License-Identifier: Apache-2.0
// Reports of the library of changes, and the question that a change which waits puts to a person.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "output.h"

namespace tool {

// A text of the library of changes, freed at the end of its scope.
class Report {
 public:
  Report() = default;
  ~Report();
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  [[nodiscard]] char** Out() { return &text_; }
  [[nodiscard]] const char* Text() const { return text_ != nullptr ? text_ : "{}"; }
  [[nodiscard]] Json AsJson() const;

 private:
  char* text_ = nullptr;
};

// On a terminal, for a change that waits to be confirmed: shows the time that is left and asks
// whether it shall stay. The answer is done; without one the change goes back by itself.
void AskToConfirm(const Json& report, Context* context);

}  // namespace tool
