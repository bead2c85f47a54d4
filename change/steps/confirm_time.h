// SPDX-License-Identifier: Apache-2.0
// How long a change waits to be confirmed.
#pragma once

#include "steps/change_state.h"

namespace change {

// What was asked for; else the time of the settings, and that which the machine needs until a
// change of this kind can be seen at all.
long SecondsToConfirm(const Change& change);

}  // namespace change
