// SPDX-License-Identifier: Apache-2.0
// What the files of a VLAN and of its parent say while there is a VLAN and afterwards.
#pragma once

#include <optional>
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/base/place.h"
#include "frame/os/rewrite.h"

namespace virtual_if {

// The VLAN's own. The IPv6 settings are the parent's; those of a parent from which a writer that
// was killed has taken them already are where that one has put them. Nothing when that file cannot
// be read.
std::optional<std::string> VlanFile(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings);

// The parent's without its addresses. Nothing, with 0x0900 set, when a file cannot be read.
std::optional<std::string> ParentFileUnder(const std::string& parent);
// The parent's with the VLAN's addresses.
std::optional<std::string> ParentFileWithout(const KOPANETVLAN& vlan);

// Removes the temporary files of writers that have been killed, but for those that hold the only
// copy of another parent's settings.
void RemoveAbandonedFiles(const std::string& parent);

// Fills the temporary file; false with 0x0B00 set.
[[nodiscard]] bool Prepare(frame::Rewrite* file, const std::string& text);

// Moves it to its place. False with 0x2800, or logged in the caller's name.
[[nodiscard]] bool TakePlace(frame::Rewrite* file, const std::string& path,
                             const frame::Place& at = {});

}  // namespace virtual_if
