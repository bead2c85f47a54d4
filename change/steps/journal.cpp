// SPDX-License-Identifier: Apache-2.0
#include "steps/journal.h"

#include <chrono>
#include <exception>

#include "document/section.h"
#include "record/caller.h"
#include "record/digest.h"
#include "record/owned_files.h"
#include "record/secrets.h"
#include "record/store.h"
#include "record/watch.h"
#include "rehearsal/inputs.h"
#include "steps/confirm_time.h"
#include "steps/settings.h"
#include "steps/signals.h"

namespace change {
namespace {

Record RecordFor(const Change& change, const Report& report) {
  Record record;
  record.began = WallTime();
  record.boot = RunOfTheMachine();
  record.runner = ThisRunner();
  record.program = change.options.program;
  record.who = CallerAsJson();
  record.from = CallersConnection();
  record.wish = WishWithoutSecrets(change.wish);
  record.options = PlannedOptions(change.options);
  if (change.options.confirm) record.options["confirm"] = *change.options.confirm;
  for (const StepReport& step : report.steps)
    record.steps.push_back(step.step.what);
  return record;
}

// Of the state of the machine what the services need that follow their files.
Json Only(const Json& document, const std::vector<std::string>& sections) {
  Json part = Json::object();
  for (const std::string& section : sections)
    Put(&part, section.c_str(), Member(document, section));
  return part;
}

std::optional<Record> Begin(const Undertaking& undertaking, const Report& report,
                            std::string* problem) {
  const Change& change = undertaking.change;
  Record record = RecordFor(change, report);
  record.undoes = undertaking.undoes;
  record.services = undertaking.services;
  for (const auto& [path, file] : undertaking.generation.files)
    record.files[path].before = DigestOf(file);
  const auto number = store::NewNumber(problem);
  if (!number) return std::nullopt;
  record.number = *number;
  const Stored before{undertaking.generation, Only(change.live, record.services),
                      Only(change.before, record.services)};
  if (!store::WriteBefore(&record, before, problem) || !store::Write(record, problem))
    return std::nullopt;
  return record;
}

void Conclude(const Report& report, const Change& change, Record* record) {
  const bool stands = !report.restored;
  const bool waits = stands && change.options.confirm.has_value();
  record->runner = {};
  record->result = report.result;
  record->reason = report.reason;
  record->problems = report.problems;
  record->state = report.result == ZARNNETCHANGE_NOT_PUT_BACK ? RecordState::kNotPutBack
                  : !stands                                   ? RecordState::kFailed
                  : waits                                     ? RecordState::kWaiting
                                                              : RecordState::kKept;
  if (waits) record->deadline = DeadlineIn(SecondsToConfirm(change));
}

// What is thrown on the way ends the change, and not the process in the middle of it.
Report Made(const Acts& acts, const Report& report) {
  try {
    return acts.make(report);
  } catch (const std::exception& broken) {
    return acts.putBack(End(report, ZARNNETCHANGE_FAILED,
                            std::string("the change was broken off: ") + broken.what()));
  }
}

void Prune() try {
  const KeepSettings keep = ReadKeepSettings();
  store::RemoveOld(keep.changes, keep.days, keep.records);
} catch (const std::exception&) {
  return;  // what stays goes with the next change: this one is made
}

}  // namespace

Report End(Report report, int result, std::string reason) {
  report.result = result;
  report.reason = std::move(reason);
  return report;
}

void NotePutBack(std::vector<std::string> problems, Report* report) {
  report->problems.insert(report->problems.end(), problems.begin(), problems.end());
  report->restored = report->problems.empty();
  if (*report->restored) {
    report->reason += "; everything was put back";
    return;
  }
  report->result = ZARNNETCHANGE_NOT_PUT_BACK;
  report->reason += "; not everything could be put back: " + report->problems.front();
}

Json ConfirmOf(const Record& record) {
  constexpr long long kSecond = 1000;
  return {{"number", record.number},
          {"seconds", (record.deadline->Left() + kSecond - 1) / kSecond},
          {"until", record.deadline->untilWallTime}};
}

void NoteAfter(Record* record, const Generation* before) {
  Files changed;
  for (auto& [path, digests] : record->files)
    digests.after.clear();
  for (const std::string& path : OwnedFiles()) {
    auto file = ReadWhole(path);
    if (!file) continue;
    FileDigests& digests = record->files[path];
    digests.after = DigestOf(*file);
    if (digests.after != digests.before) changed[path] = std::move(*file);
  }
  for (const auto& [path, digests] : record->files) {
    if (digests.after.empty()) changed[path] = std::nullopt;
  }
  // Without these contents there is no difference to be shown, and everything else.
  std::string problem;
  if (before != nullptr) static_cast<void>(store::WriteAfter(record, changed, &problem));
}

Report MakeRecorded(const Undertaking& undertaking, Report report, const Acts& acts) {
  const auto begin = std::chrono::steady_clock::now();
  const SignalsHeldOff signals;
  std::string problem;
  auto record = Begin(undertaking, report, &problem);
  if (!record) {
    return End(std::move(report), ZARNNETCHANGE_FAILED,
               "the change cannot be recorded: " + problem + "; nothing was touched");
  }
  report.number = record->number;
  if (undertaking.change.options.confirm && !StartWatcher(record->number, &problem)) {
    report = End(std::move(report), ZARNNETCHANGE_FAILED,
                 "nobody would watch the time to confirm: " + problem + "; nothing was touched");
    report.restored = true;
  } else {
    report = Made(acts, report);
  }
  NoteAfter(&*record, &undertaking.generation);
  record->seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  Conclude(report, undertaking.change, &*record);
  if (!store::Write(*record, &problem) && !report.restored) {
    return acts.putBack(End(std::move(report), ZARNNETCHANGE_FAILED,
                            "that the change is done cannot be recorded: " + problem));
  }
  if (record->state == RecordState::kWaiting) report.confirm = ConfirmOf(*record);
  Prune();
  return report;
}

void RecordRefusal(const Change& change, Report* report) {
  Record record = RecordFor(change, *report);
  record.state = RecordState::kRefused;
  record.result = report->result;
  record.reason = report->reason;
  // It is for a look alone: where it cannot be kept, the refusal is the same.
  std::string problem;
  const auto number = store::NewNumber(&problem);
  if (!number) return;
  record.number = *number;
  if (store::Write(record, &problem)) report->number = *number;
}

}  // namespace change
