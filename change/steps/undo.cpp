// SPDX-License-Identifier: Apache-2.0
// The files and the kernel of a record are put back as after a failed change, under a number of
// their own.
#include "steps/undo.h"

#include <algorithm>
#include <set>
#include <unistd.h>

#include "document/section.h"
#include "frame/model/paths.h"
#include "record/change_lock.h"
#include "record/digest.h"
#include "record/owned_files.h"
#include "record/store.h"
#include "rules/rules.h"
#include "steps/journal.h"
#include "steps/network_lock.h"
#include "steps/pending.h"
#include "steps/put_back.h"

namespace change {
namespace {

constexpr char kNothing[] = "there is no change to undo";

// What is undone: the change, and all later ones.
struct Past {
  long number = 0;
  bool waits = false;           // it is taken back before its time, whatever was changed since
  std::vector<Record> records;  // from that one on
  Change before;                // the services, as they were
  Generation target;
  std::vector<std::string> services;
};

// Leases, and what they taught: programs write them, and they are of today.
bool IsLearned(const std::string& path) {
  namespace paths = frame::paths;
  return path.starts_with("/etc/dhclient/") || path.starts_with("/tmp/") ||
         path == paths::kLearnedServersV4 || path == paths::kLearnedServersV6 ||
         path == paths::kResolv;
}

// The name servers in use are learned, or a change's own: those that are as it left them.
bool IsOfToday(const Past& past, const std::string& path, const WholeFile& today) {
  if (!IsLearned(path) || path != frame::paths::kResolv) return IsLearned(path);
  const auto last = std::find_if(past.records.rbegin(), past.records.rend(), [](const auto& each) {
    return each.state != RecordState::kRefused;
  });
  const auto left = last->files.find(path);
  return left == last->files.end() || left->second.after != DigestOf(today);
}

// The last that stands; 0 for none.
long LastKept() {
  const auto numbers = store::Numbers();
  std::string problem;
  for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
    const auto record = store::Read(*number, &problem);
    if (record && record->state == RecordState::kKept) return *number;
  }
  return 0;
}

std::optional<Report> ReadPast(long number, Past* past) {
  past->number = number;
  std::string problem;
  for (const long later : store::Numbers()) {
    if (later < number) continue;
    auto record = store::Read(later, &problem);
    if (!record) return End({}, ZARNNETCHANGE_FAILED, problem);
    past->records.push_back(std::move(*record));
  }
  if (past->records.empty() || past->records.front().number != number) {
    return End({}, ZARNNETCHANGE_NOT_FOUND,
               "there is no record of a change " + std::to_string(number));
  }
  if (past->records.front().state == RecordState::kRefused) {
    return End({}, ZARNNETCHANGE_NOT_FOUND,
               "change " + std::to_string(number) + " was refused: there is nothing to undo");
  }
  return std::nullopt;
}

// Of a service that several changes were about, the first knows what it was.
std::optional<Report> ReadContents(Past* past) {
  past->before.live = Json::object();
  std::set<std::string> services;
  for (auto record = past->records.rbegin(); record != past->records.rend(); ++record) {
    const bool first = record->number == past->records.front().number;
    if (record->state == RecordState::kRefused || (!first && record->services.empty())) continue;
    std::string problem;
    auto stored = store::ReadBefore(*record, &problem);
    if (!stored) return End({}, ZARNNETCHANGE_FAILED, problem + ": it cannot be undone");
    past->before.live.merge_patch(stored->live);
    past->before.before.merge_patch(stored->configured);
    past->before.wish.merge_patch(record->wish);
    services.insert(record->services.begin(), record->services.end());
    if (first) past->target = std::move(stored->generation);
  }
  past->services.assign(services.begin(), services.end());
  past->before.kernel = past->target.kernel;
  return std::nullopt;
}

// What is leased stays as it is today where it is leased in both.
void TakeWhatIsLeased(const Generation& now, Past* past) {
  Generation* const target = &past->target;
  for (auto file = target->files.begin(); file != target->files.end();) {
    const bool learned = IsLearned(file->first) && file->first != frame::paths::kResolv;
    file = learned ? target->files.erase(file) : std::next(file);
  }
  for (const auto& [path, file] : now.files) {
    if (IsOfToday(*past, path, file)) target->files.insert_or_assign(path, file);
  }
  for (const std::string& ifname : target->dhcpClients) {
    const auto link = target->kernel.links.find(ifname);
    const KernelLink* const today = now.kernel.Link(ifname);
    if (!now.dhcpClients.contains(ifname) || link == target->kernel.links.end() || !today) continue;
    link->second.addresses = today->addresses;
    const auto isOf = [&](const KernelRoute& route) { return route.ifname == ifname; };
    std::erase_if(target->kernel.routes, isOf);
    std::copy_if(now.kernel.routes.begin(), now.kernel.routes.end(),
                 std::back_inserter(target->kernel.routes), isOf);
  }
}

// ---- by hand

using Digests = std::map<std::string, std::string>;

Digests After(const Record& record) {
  Digests digests;
  for (const auto& [path, both] : record.files)
    digests[path] = both.after;
  return digests;
}

Digests Before(const Record& record) {
  Digests digests;
  for (const auto& [path, both] : record.files)
    digests[path] = both.before;
  return digests;
}

Digests Today() {
  Digests digests;
  for (const std::string& path : OwnedFiles()) {
    if (const auto file = ReadWhole(path)) digests[path] = DigestOf(*file);
  }
  return digests;
}

void NoteOthers(const Digests& left, const Digests& found, std::set<std::string>* paths) {
  const auto in = [](const Digests& digests, const std::string& path) {
    const auto entry = digests.find(path);
    return entry != digests.end() ? entry->second : std::string();
  };
  for (const Digests* const digests : {&left, &found}) {
    for (const auto& [path, digest] : *digests) {
      if (!IsLearned(path) && in(left, path) != in(found, path)) paths->insert(path);
    }
  }
}

// The files that are not as one change left them and the next one, or we, found them.
std::vector<std::string> ChangedByHand(const std::vector<Record>& records) {
  std::set<std::string> paths;
  const Record* last = nullptr;
  for (const Record& record : records) {
    if (record.state == RecordState::kRefused) continue;
    if (last != nullptr) NoteOthers(After(*last), Before(record), &paths);
    last = &record;
  }
  NoteOthers(After(*last), Today(), &paths);
  return {paths.begin(), paths.end()};
}

void Judge(const Past& past, const Generation& now, Findings* findings) {
  for (const std::string& path : ChangedByHand(past.records)) {
    findings->Add("changed_by_hand", Path() / "files" / path, Severity::kInsistable,
                  path +
                      " was changed since, by something else than a change: that would be lost, "
                      "insist to lose it");
  }
  const std::string lost = OwnPathLostBy(now.kernel, past.target.kernel);
  if (!lost.empty()) findings->Add("own_path", Path() / "interfaces", Severity::kInsistable, lost);
}

bool IsRefused(const Findings& findings, const Options& options) {
  return !options.insist &&
         std::any_of(findings.List().begin(), findings.List().end(), [&](const Finding& finding) {
           return finding.rule != "own_path" || !options.confirm;
         });
}

// ---- going back

StepReport StepTo(const Generation& target, long number) {
  StepReport report;
  report.step.what = "go back to before change " + std::to_string(number);
  report.step.setter = "files, kernel and services of its record";
  for (const std::string& difference : FileDifferencesFrom(target))
    report.step.touches.push_back(difference.substr(0, difference.find(' ')));
  return report;
}

Report GoBack(const Past& past, const Options& options, Report report) {
  const auto problems = PutAllBack(past.before, past.services, past.target);
  report.steps.front().state = StepReport::State::kDone;
  if (problems.empty()) return End(std::move(report), ZARNNETCHANGE_DONE, "done");
  report.problems = problems;
  return End(std::move(report), ZARNNETCHANGE_OTHERWISE,
             "the machine is not as it was: " + problems.front() +
                 (options.keep ? "; kept as it is" : ""));
}

// What runs now, for the way back from the undoing.
Change TodayOf(const Past& past, const Generation& now, const Options& options) {
  Change today;
  today.options = options;
  today.kernel = now.kernel;
  today.wish = past.before.wish;
  if (past.services.empty()) return today;
  const View view{now.kernel, true, now.dhcpClients};
  today.before = ReadConfigured(view, past.services);
  today.live = ReadLive(view, today.before, past.services);
  return today;
}

// A report without a step is the end.
Report Prepare(const Options& options, Past* past, Generation* now) {
  std::string problem;
  const auto generation = KeepGeneration(&problem);
  if (!generation) return End({}, ZARNNETCHANGE_FAILED, problem);
  *now = *generation;
  Report report;
  report.undoes = past->number;
  Findings findings;
  if (!past->waits) {
    TakeWhatIsLeased(*now, past);
    Judge(*past, *now, &findings);
  }
  report.findings = findings.List();
  if (IsRefused(findings, options))
    return End(std::move(report), ZARNNETCHANGE_REFUSED, findings.List().front().sentence);
  if (DifferencesFrom(past->target).empty()) {
    return End(std::move(report), ZARNNETCHANGE_DONE,
               "the machine is as before change " + std::to_string(past->number) + " already");
  }
  report.steps.push_back(StepTo(past->target, past->number));
  return report;
}

// Goes back; forth again where the machine does not become as it was.
Acts ActsOf(const Past& past, const Generation& now, const Change& today) {
  const auto putBack = [&](Report failed) {
    NotePutBack(PutAllBack(today, past.services, now), &failed);
    return failed;
  };
  const auto make = [&, putBack](Report made) {
    made = GoBack(past, today.options, std::move(made));
    const bool fails = made.result != ZARNNETCHANGE_DONE && !today.options.keep;
    if (!fails) return made;
    made.problems.clear();
    return putBack(std::move(made));
  };
  return {make, putBack};
}

Report UndoLocked(long number, const Options& options, const Progress& progress) {
  Past past;
  if (auto none = ReadPast(number, &past)) return *none;
  if (auto none = ReadContents(&past)) return *none;
  const NetworkLock network(options.wait);
  if (!network.IsHeld()) return End({}, ZARNNETCHANGE_BUSY, NetworkLock::HolderSentence());
  Generation now;
  Report report = Prepare(options, &past, &now);
  if (report.steps.empty()) return report;
  const Change today = TodayOf(past, now, options);
  const Acts acts = ActsOf(past, now, today);
  const auto make = [&](Report made) {
    progress(1, 1, made.steps.front().step.what, 0);
    return acts.make(std::move(made));
  };
  return MakeRecorded({today, now, past.services, number}, std::move(report), {make, acts.putBack});
}

// What is undone, found without settling anything.
std::optional<Report> FindPast(const Options& options, Past* past) {
  const auto numbers = store::Numbers();
  std::string problem;
  const auto last = numbers.empty() ? std::nullopt : store::Read(numbers.back(), &problem);
  long number = options.number;
  if (last && !last->IsSettled()) {
    number = number != 0 ? number : last->number;
    past->waits = true;
    if (last->state == RecordState::kOpen || number != last->number) {
      return End(
          {}, ZARNNETCHANGE_BUSY,
          "change " + std::to_string(last->number) +
              (last->state == RecordState::kOpen ? " is under way" : " waits to be confirmed"));
    }
  }
  if (number == 0) number = LastKept();
  if (number == 0) return End({}, ZARNNETCHANGE_NOT_FOUND, kNothing);
  if (auto none = ReadPast(number, past)) return none;
  return ReadContents(past);
}

}  // namespace

Report RehearseUndo(const Options& options, const EnterCopy& enter) {
  if (auto refused = NotRoot()) return *refused;
  Past past;
  if (auto none = FindPast(options, &past)) return *none;
  Generation now;
  Report report = Prepare(options, &past, &now);
  if (report.steps.empty()) return report;
  const Change today = TodayOf(past, now, options);
  std::string problem;
  if (!enter(now, &problem)) return End(std::move(report), ZARNNETCHANGE_FAILED, problem);
  return ActsOf(past, now, today).make(std::move(report));
}

Report Undo(const Options& options, const Progress& progress) {
  if (auto refused = NotRoot()) return *refused;
  const ChangeLock lock(options.program, options.wait);
  if (!lock.IsHeld()) return Busy({});
  const Leftover leftover = SettleLeftover(options);
  if (leftover.waiting && (options.number == 0 || options.number == leftover.waiting->number))
    return TakeBack(*leftover.waiting, options);
  if (leftover.IsInTheWay(options)) return InTheWay(leftover, {});
  const long number = options.number != 0 ? options.number : LastKept();
  if (number == 0) return End({}, ZARNNETCHANGE_NOT_FOUND, kNothing);
  return UndoLocked(number, options, progress);
}

}  // namespace change
