// SPDX-License-Identifier: Apache-2.0
// A change and its record: written before the first step, completed at the end.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "record/generation.h"
#include "record/record.h"
#include "steps/report.h"

namespace change {

// What a record says of a change before it is made.
struct Undertaking {
  const Change& change;
  const Generation& generation;
  std::vector<std::string> services;
  long undoes = 0;
};

// Makes a change that has a record and a number, and a watcher where it shall be confirmed. What
// cannot be recorded is not done; what cannot be recorded as done is put back. The acts answer the
// report as they leave it.
struct Acts {
  std::function<Report(Report)> make;
  std::function<Report(Report)> putBack;
};
Report MakeRecorded(const Undertaking& undertaking, Report report, const Acts& acts);

// Keeps the wish of a change that a rule refuses, for a look.
void RecordRefusal(const Change& change, Report* report);

// What the files are now, into the record; the contents of those that are others than before, too.
void NoteAfter(Record* record, const Generation* before);

// The machine is as it was, or not: what is told of it.
void NotePutBack(std::vector<std::string> problems, Report* report);

// "confirm" of a report.
Json ConfirmOf(const Record& record);

Report End(Report report, int result, std::string reason);

}  // namespace change
