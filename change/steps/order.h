// SPDX-License-Identifier: Apache-2.0
// The steps of all sections in the order that they are taken in.
#pragma once

#include "steps/change_state.h"

namespace change {

// By their phases. What is removed goes from above, what is made comes from below: the phases of
// one kind of thing each are then the order of what does not stand on each other.
Steps InTurn(const Change& change, Steps steps);

}  // namespace change
