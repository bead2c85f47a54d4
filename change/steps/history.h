// SPDX-License-Identifier: Apache-2.0
// The changes that were, for a look.
#pragma once

#include "json.h"
#include "steps/change_state.h"

namespace change {

// All changes, or one with the differences of its files; the result is put into it.
Json History(const Options& options);

}  // namespace change
