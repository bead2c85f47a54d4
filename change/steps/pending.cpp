// SPDX-License-Identifier: Apache-2.0
// Only the last change can be left undone: none is made while one is.
#include "steps/pending.h"

#include <ctime>
#include <unistd.h>

#include "record/caller.h"
#include "record/change_lock.h"
#include "record/owned_files.h"
#include "record/store.h"
#include "record/watch.h"
#include "steps/journal.h"
#include "steps/network_lock.h"
#include "steps/put_back.h"
#include "steps/signals.h"
#include "texts.h"

namespace change {
namespace {

constexpr long kLongestWait = 3600;

std::string Named(const Record& record) {
  return "change " + std::to_string(record.number);
}

// "change 7 of root (zarnnetctl)"
std::string Signed(const Record& record) {
  std::string login = TextOf(Member(record.who, "sudo"));
  if (login.empty()) login = TextOf(Member(record.who, "login"));
  return Named(record) + (login.empty() ? "" : " of " + login) + " (" + record.program + ")";
}

// What the services need that follow the files.
Change ChangeOf(const Record& record, const Stored& before) {
  Change change;
  change.wish = record.wish;
  change.before = before.configured;
  change.live = before.live;
  change.kernel = before.generation.kernel;
  return change;
}

std::vector<std::string> PutContentsBack(const Record& record, const Stored& before,
                                         bool starting) {
  if (!starting || record.boot == RunOfTheMachine())
    return PutAllBack(ChangeOf(record, before), record.services, before.generation);
  // The kernel is as it was born, and the start that goes on sets it up from the files.
  PutBackFiles(before.generation);
  return FileDifferencesFrom(before.generation);
}

// What a process that died had started goes on, and would undo what is put back; so would what this
// one starts, if it died in here: then the next does the same again.
std::vector<std::string> AwaitPrograms(Record* record) {
  const bool ofThisRun = record->boot == RunOfTheMachine();
  std::vector<std::string> left;
  if (ofThisRun) left = AwaitProgramsOf(record->runner);
  record->runner = ThisRunner();
  std::string problem;
  if (ofThisRun) static_cast<void>(store::Write(*record, &problem));
  return left;
}

Report PutBackRecord(Record record, const Options& options, RecordState state,
                     const std::string& why) {
  Report report = End({}, ZARNNETCHANGE_DONE, Named(record) + " " + why);
  report.number = record.number;
  const NetworkLock network(options.wait);
  if (!network.IsHeld()) {
    return End(std::move(report), ZARNNETCHANGE_BUSY,
               Named(record) +
                   " is to be put back, and another process holds the network "
                   "configuration");
  }
  const SignalsHeldOff signals;
  const auto running = AwaitPrograms(&record);
  if (!running.empty()) report.reason += "; " + Joined(running) + " of it still runs";
  std::string problem;
  const auto before = store::ReadBefore(record, &problem);
  NotePutBack(before ? PutContentsBack(record, *before, options.starting)
                     : std::vector<std::string>{problem},
              &report);
  RemoveAbandonedFiles();
  record.state = *report.restored ? state : RecordState::kNotPutBack;
  // What was made is told by what came of the making, what was put back by this.
  record.result = *report.restored ? record.result : report.result;
  record.reason = report.reason;
  record.problems = report.problems;
  record.settled = WallTime();
  record.settledBy = CallerAsJson();
  record.runner = {};
  NoteAfter(&record, nullptr);
  // Where this cannot be written it is put back once more, which changes nothing.
  static_cast<void>(store::Write(record, &problem));
  return report;
}

std::string TimeLeft(const Record& record) {
  return ConfirmOf(record)["seconds"].dump() + " s";
}

// What stands in the way of finding the change that waits, or that it is another one.
std::optional<Report> NothingToConfirm(const Leftover& leftover, const Options& options) {
  if (leftover.putBack) {
    Report report = *leftover.putBack;
    if (report.result == ZARNNETCHANGE_DONE) report.result = ZARNNETCHANGE_FAILED;
    report.reason = "too late: " + report.reason;
    return report;
  }
  if (!leftover.unreadable.empty()) return End({}, ZARNNETCHANGE_FAILED, leftover.unreadable);
  if (!leftover.waiting) return End({}, ZARNNETCHANGE_NOT_FOUND, "no change waits to be confirmed");
  if (options.number == 0 || options.number == leftover.waiting->number) return std::nullopt;
  return End({}, ZARNNETCHANGE_NOT_FOUND,
             "change " + std::to_string(options.number) +
                 " does not wait to be confirmed: " + Signed(*leftover.waiting) + " does");
}

Report ExtendOrKeep(Record record, const Options& options) {
  const bool extends = options.extend > 0;
  if (extends) {
    record.deadline = Extended(*record.deadline, options.extend);
  } else {
    record.state = RecordState::kKept;
    record.settled = WallTime();
    record.settledBy = CallerAsJson();
  }
  std::string problem;
  if (!store::Write(record, &problem)) {
    return End({}, ZARNNETCHANGE_FAILED,
               Named(record) + " still waits, that it is confirmed cannot be recorded: " + problem);
  }
  Report report = End({}, ZARNNETCHANGE_DONE,
                      extends ? Named(record) + " waits " + TimeLeft(record) + " from now"
                              : Named(record) + " is confirmed");
  report.number = record.number;
  if (extends) report.confirm = ConfirmOf(record);
  return report;
}

Report RecoverLocked(const Options& options) {
  const Leftover leftover = SettleLeftover(options);
  if (leftover.putBack) return *leftover.putBack;
  if (!leftover.unreadable.empty()) return End({}, ZARNNETCHANGE_FAILED, leftover.unreadable);
  if (!leftover.waiting) return End({}, ZARNNETCHANGE_DONE, "nothing is to be put back");
  Report report = End({}, ZARNNETCHANGE_DONE,
                      Signed(*leftover.waiting) + " waits to be confirmed, " +
                          TimeLeft(*leftover.waiting) + " are left");
  report.number = leftover.waiting->number;
  report.confirm = ConfirmOf(*leftover.waiting);
  return report;
}

// A second, or less at the end; asleep the machine's clock goes on.
void Pause(const Deadline& deadline) {
  constexpr long long kSlice = 1000;
  constexpr long kMillisecond = 1000000;
  const long long left = std::min(deadline.Left() + 1, kSlice);
  const timespec pause{left / kSlice, static_cast<long>(left % kSlice) * kMillisecond};
  ::clock_nanosleep(CLOCK_BOOTTIME, 0, &pause, nullptr);
}

// Until the record says something else than when it was read, or the time is over.
void AwaitChangeOf(const Record& record) {
  std::string problem;
  for (auto now = store::Read(record.number, &problem);
       now && now->state == RecordState::kWaiting && !now->deadline->IsOver();
       now = store::Read(record.number, &problem))
    Pause(*now->deadline);
}

// The lock of changes is not held meanwhile; who makes the change holds it until that is made.
Report Watch(Options options) {
  constexpr int kTries = 600;
  Report report;
  options.wait = kLongestWait;
  for (int tries = 0; tries < kTries; ++tries) {
    std::optional<Record> waiting;
    {
      const ChangeLock lock(options.program, options.wait);
      if (!lock.IsHeld()) continue;
      const Leftover leftover = SettleLeftover(options);
      waiting = leftover.waiting;
      if (leftover.putBack) report = *leftover.putBack;
    }
    if (waiting && waiting->number == options.watch) {
      AwaitChangeOf(*waiting);
    } else if (report.result != ZARNNETCHANGE_BUSY) {
      return report;
    }
  }
  return report;
}

}  // namespace

Leftover SettleLeftover(const Options& options) {
  Leftover leftover;
  const auto numbers = store::Numbers();
  if (numbers.empty()) return leftover;
  auto record = store::Read(numbers.back(), &leftover.unreadable);
  if (!record || record->IsSettled()) return leftover;
  if (record->state == RecordState::kOpen) {
    leftover.putBack = PutBackRecord(std::move(*record), options, RecordState::kFailed,
                                     "was not brought to its end: its process is gone");
  } else if (record->deadline->IsOver()) {
    leftover.putBack = PutBackRecord(std::move(*record), options, RecordState::kReverted,
                                     record->deadline->IsOfThisRun()
                                         ? "was not confirmed in time"
                                         : "was not confirmed before the machine started anew");
  } else {
    // Without a watcher the next call is what puts it back.
    std::string problem;
    if (options.watch == 0 && !IsWatched(record->number))
      static_cast<void>(StartWatcher(record->number, &problem));
    leftover.waiting = std::move(*record);
  }
  return leftover;
}

bool Leftover::IsInTheWay(const Options& options) const {
  return waiting || (putBack && putBack->result != ZARNNETCHANGE_DONE) ||
         (!unreadable.empty() && !options.insist);
}

Report InTheWay(const Leftover& leftover, Report report) {
  if (leftover.putBack) return *leftover.putBack;
  if (!leftover.waiting) {
    return End(std::move(report), ZARNNETCHANGE_REFUSED,
               leftover.unreadable +
                   "; nothing was touched: whether that change waits cannot be "
                   "told, insist to go on");
  }
  const Record& record = *leftover.waiting;
  report.holder = {{"number", record.number},
                   {"program", record.program},
                   {"who", record.who},
                   {"since", record.began},
                   {"seconds_left", ConfirmOf(record)["seconds"]}};
  return End(std::move(report), ZARNNETCHANGE_BUSY,
             Signed(record) + " waits to be confirmed, " + TimeLeft(record) +
                 " are left: confirm it, or undo it");
}

Report TakeBack(Record record, const Options& options) {
  return PutBackRecord(std::move(record), options, RecordState::kReverted, "was taken back");
}

Report Busy(Report report) {
  report.holder = ChangeLock::Holder();
  const Json& holder = report.holder;
  std::string reason = "somebody else is making a change";
  if (holder.contains("pid")) {
    reason = TextOf(Member(holder, "program")) + " (process " + holder["pid"].dump() +
             ") is making a change since " + TextOf(Member(holder, "since"));
  }
  return End(std::move(report), ZARNNETCHANGE_BUSY, std::move(reason));
}

std::optional<Report> NotRoot() {
  if (::geteuid() == 0) return std::nullopt;
  return End({}, ZARNNETCHANGE_NOT_ALLOWED, "only root may change the network");
}

Report Confirm(const Options& options) {
  if (auto refused = NotRoot()) return *refused;
  const ChangeLock lock(options.program, options.wait);
  if (!lock.IsHeld()) return Busy({});
  const Leftover leftover = SettleLeftover(options);
  if (auto none = NothingToConfirm(leftover, options)) return *none;
  return ExtendOrKeep(*leftover.waiting, options);
}

Report Recover(const Options& options) {
  if (auto refused = NotRoot()) return *refused;
  if (options.watch != 0) return Watch(options);
  const ChangeLock lock(options.program, options.wait);
  if (!lock.IsHeld()) return Busy({});
  return RecoverLocked(options);
}

}  // namespace change
