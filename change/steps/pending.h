// SPDX-License-Identifier: Apache-2.0
// What the last change has left: one that waits to be confirmed, or whose process was killed.
#pragma once

#include <optional>
#include <string>

#include "record/record.h"
#include "steps/report.h"

namespace change {

// Under the lock of changes: puts back what is to be put back. The report then says how the caller
// ends, unless he may go on.
struct Leftover {
  std::optional<Record> waiting;  // there is time yet
  std::optional<Report> putBack;
  std::string unreadable;  // the record that nobody can use, a sentence

  [[nodiscard]] bool IsInTheWay(const Options& options) const;
};
Leftover SettleLeftover(const Options& options);

// The answer to a change while the leftover is in its way.
Report InTheWay(const Leftover& leftover, Report report);

// Puts back a change that waits, before its time is over.
Report TakeBack(Record record, const Options& options);

// What C callers ask for. They take the lock of changes.
Report Confirm(const Options& options);
Report Recover(const Options& options);

// Somebody else holds the lock of changes.
Report Busy(Report report);
// Only root may; empty when it is he.
std::optional<Report> NotRoot();

}  // namespace change
