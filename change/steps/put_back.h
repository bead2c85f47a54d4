// SPDX-License-Identifier: Apache-2.0
// The way back of a change, for who made it and for who finds it undone.
#pragma once

#include <string>
#include <vector>

#include "record/generation.h"
#include "steps/report.h"

namespace change {

// The sections whose programs have to follow when the files are put back: those that had such a
// step, and the DHCP server, which the making of bonds and VLANs starts anew. Of steps that are
// only planned when all are meant.
enum class Which { kTaken, kAll };
std::vector<std::string> ServicesOf(const Report& report, Which which);

// Puts back files, kernel and services, and compares. What is not as it was, a sentence each.
std::vector<std::string> PutAllBack(const Change& change, const std::vector<std::string>& services,
                                    const Generation& generation);

}  // namespace change
