// SPDX-License-Identifier: Apache-2.0
// Back to what the machine was before a change.
#pragma once

#include "steps/engine.h"

namespace change {

Report Undo(const Options& options, const Progress& progress);

}  // namespace change
