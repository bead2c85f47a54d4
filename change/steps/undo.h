// SPDX-License-Identifier: Apache-2.0
// Back to what the machine was before a change.
#pragma once

#include "steps/engine.h"

namespace change {

Report Undo(const Options& options, const Progress& progress);

// The same in the copy, for a plan; a change that waits is the one that would be taken back.
Report RehearseUndo(const Options& options, const EnterCopy& enter);

}  // namespace change
