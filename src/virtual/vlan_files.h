// What the files of a VLAN and of its parent say while there is a VLAN and afterwards.
#pragma once

#include <optional>
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/os/rewrite.h"

namespace vlan {

// The IPv6 settings are the parent's.
std::string FileOf(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings);

// The parent's without its addresses. Nothing, with 0x0900 set, when a file cannot be read.
std::optional<std::string> ParentFileUnder(const std::string& parent);
// The parent's with the VLAN's addresses.
std::optional<std::string> ParentFileWithout(const KOPANETVLAN& vlan);

// Fills the temporary file; false with 0x0B00 set.
bool Prepare(frame::Rewrite* file, const std::string& text);

}  // namespace vlan
