// SPDX-License-Identifier: Apache-2.0
// The records in /var/lib/zarnnet, root's alone: NUMBER.json for each change, NUMBER.before and
// NUMBER.after for what files and kernel were. Each is whole or not there. Whoever writes holds
// the lock of changes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "record/record.h"
#include "record/stored.h"

namespace change::store {

inline constexpr char kFolder[] = "/var/lib/zarnnet";

// All numbers that have a record, ascending.
std::vector<long> Numbers();

// A number that no change has had; empty with the reason when that cannot be written down.
std::optional<long> NewNumber(std::string* problem);

bool Write(const Record& record, std::string* problem);
// Empty with the reason, a sentence.
std::optional<Record> Read(long number, std::string* problem);

// What was before: written before the record, which then names its digest.
bool WriteBefore(Record* record, const Stored& before, std::string* problem);
std::optional<Stored> ReadBefore(const Record& record, std::string* problem);
bool WriteAfter(Record* record, const Files& after, std::string* problem);
std::optional<Files> ReadAfter(const Record& record);

// Of changes that are neither among the last so many nor so young the contents go and the digests
// stay; of those without contents so many records stay.
void RemoveOld(long changes, long days, long records);

}  // namespace change::store
