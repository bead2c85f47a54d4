// SPDX-License-Identifier: Apache-2.0
// What a rehearsal has changed in the copy, as the plan tells it.
#pragma once

#include "json.h"
#include "program/private_copy.h"

namespace rehearsal {

using change::Json;

// Each file: "path", "change" (new, changed, gone), "diff", and "mode" and "owner" where they are
// others than before.
Json FileChanges(const change::Generation& before);

// Each setting: "setting", "before", "after"; null where there was or will be none.
Json KernelChanges(const change::Kernel& before, const change::Kernel& after);

// What the DHCP server's own check said against the settings that it was to be started with, with
// the setting; empty when it took them, or was not asked.
std::string ServersRefusal();

// "programs", "events", "services" and "notRehearsed", out of the journal.
void AddCalls(Json* plan);

}  // namespace rehearsal
