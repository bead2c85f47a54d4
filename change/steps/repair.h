// SPDX-License-Identifier: Apache-2.0
// What steps take away beside what they are for, put back.
#pragma once

#include <string>
#include <vector>

#include "record/generation.h"
#include "steps/change_state.h"

namespace change {

struct Repairs {
  std::vector<std::string> made;  // a sentence each
  std::vector<std::string> lost;  // what could not be put back
};

// Puts back the VLANs, the routes, the further addresses and the name servers that are gone and
// that the wish does not name: on the interface that had them, or on the one that has its address
// now.
Repairs Repair(const Change& change, const Generation& before);

}  // namespace change
