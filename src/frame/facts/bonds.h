// SPDX-License-Identifier: Apache-2.0
// The bonds of the kernel and of Open vSwitch, with their modes and slaves.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <zarnnetsdk/virtual.h>

namespace frame::facts {

// The bonds that the kernel's driver names, with slaves or without. Empty without the driver;
// nothing, with 0x0A00, when their list cannot be read.
std::optional<std::vector<std::string>> KernelBonds();

// The slaves of a bond of the kernel, in its order. Nothing, with 0x0900, 0x0A00 or (a name
// that can be no interface's) 0x0D00, when they cannot be read: so it is for every other interface.
std::optional<std::vector<std::string>> KernelSlavesOf(const std::string& bond);

// How the reading of a bond's record ended: the numbers are what callers of the C interface know.
enum class BondRead { kDone = 0, kNoOvsRecord = 1, kFailed = -1 };

// Reads a bond's record, of Open vSwitch from its interface file. A bond of the kernel without
// slaves is read, and its record empty but for the name. Failures set a code, 0x4000 for a file of
// Open vSwitch's without its keys, and are logged as net_link_aggr_get's.
BondRead ReadBond(const std::string& bond, ZARNLINKAGGROPT* record);

// The slaves of a bond by name; nothing when its record cannot be read.
std::optional<std::vector<std::string>> SlavesOf(const std::string& bond);

// Adds a slave to a record, sorted. False with 0xBB00 (already there) or 0xBD00 (the record is
// full).
bool AddSlave(const char* slave, ZARNLINKAGGROPT* record);

}  // namespace frame::facts
