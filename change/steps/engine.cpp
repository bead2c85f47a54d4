// SPDX-License-Identifier: Apache-2.0
// The steps of a change: read, check, lock, keep, act, read again, compare; keep or put back.
#include "steps/engine.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <unistd.h>
#include <utility>

#include <zarncore/zarncore.h>
#include <zarnnetsdk/error.h>

#include "document/section.h"
#include "record/change_lock.h"
#include "record/generation.h"
#include "rehearsal/inputs.h"
#include "rules/rules.h"
#include "steps/compare.h"
#include "steps/journal.h"
#include "steps/network_lock.h"
#include "steps/order.h"
#include "steps/pending.h"
#include "steps/put_back.h"
#include "steps/repair.h"
#include "texts.h"

namespace change {
namespace {

using Clock = std::chrono::steady_clock;

// ---- reading

// The sections that the wish is about, and those that it is judged by.
std::vector<std::string> SectionsToRead(const Change& change) {
  std::vector<std::string> names{"interfaces", "bonds", "bridges", "vlans", "dns", "routes"};
  for (const Section& section : Sections()) {
    const Path path = Path() / section.name;
    const bool restarts = std::any_of(change.options.restart.begin(), change.options.restart.end(),
                                      [&](const Path& restart) { return Leads(path, restart); });
    const bool known = Has(names, section.name);
    // Bonds and VLANs take the DHCP server with them.
    const bool taken = std::string(section.name) == "dhcp_server" &&
                       (change.wish.contains("bonds") || change.wish.contains("vlans"));
    if (!known && (restarts || taken || change.wish.contains(section.name)))
      names.emplace_back(section.name);
  }
  return names;
}

// False when not all of it could be read: what is taken for none would be changed as such.
bool ReadMachine(Change* change, std::string* problem) {
  *problem = "the kernel cannot be asked about its interfaces";
  auto kernel = ReadKernel();
  if (!kernel) return false;
  change->kernel = std::move(*kernel);
  std::string unread;
  const View view{change->kernel, true, InterfacesWithDhcpClient(), &unread};
  const auto sections = SectionsToRead(*change);
  change->before = ReadConfigured(view, sections);
  change->live = ReadLive(view, change->before, sections);
  *problem = unread + " cannot be read";
  return unread.empty();
}

void Settle(Change* change, Findings* findings) {
  SpellOut(change->before, DocumentShape(), &change->wish);
  change->wanted = change->before;
  change->wanted.merge_patch(change->wish);
  for (const Section& section : Sections()) {
    if (change->wish.contains(section.name)) section.settle(change, findings);
  }
}

void Compare(Change* change) {
  change->differences =
      DifferencesOf(change->wish, change->wanted, change->before, change->live, DocumentShape());
}

// ---- judging

int ResultOf(const std::vector<Finding>& findings, bool insist) {
  const auto has = [&](Severity severity) {
    return std::any_of(findings.begin(), findings.end(),
                       [&](const Finding& finding) { return finding.severity == severity; });
  };
  if (has(Severity::kUsage)) return ZARNNETCHANGE_USAGE;
  if (has(Severity::kNotFound)) return ZARNNETCHANGE_NOT_FOUND;
  if (has(Severity::kRefused) || (has(Severity::kInsistable) && !insist))
    return ZARNNETCHANGE_REFUSED;
  return ZARNNETCHANGE_DONE;
}

// The sentence of the finding that decides.
std::string ReasonOf(const std::vector<Finding>& findings, int result) {
  for (const Finding& finding : findings) {
    const bool decides =
        (result == ZARNNETCHANGE_USAGE && finding.severity == Severity::kUsage) ||
        (result == ZARNNETCHANGE_NOT_FOUND && finding.severity == Severity::kNotFound) ||
        (result == ZARNNETCHANGE_REFUSED &&
         (finding.severity == Severity::kRefused || finding.severity == Severity::kInsistable));
    if (decides) return finding.path.to_string() + ": " + finding.sentence;
  }
  return "nothing speaks against it";
}

Steps StepsOf(const Change& change) {
  Steps steps;
  for (const Section& section : Sections())
    section.plan(change, &steps);
  return InTurn(change, std::move(steps));
}

// The form, what follows from the wish, and the rules. False when the change ends here.
bool Judge(Change* change, Report* report) {
  Findings findings;
  for (const Fault& fault : FaultsOf(change->wish, DocumentShape()))
    findings.Add("document", fault.path, Severity::kUsage, fault.sentence);
  if (findings.List().empty()) {
    std::string problem;
    if (!ReadMachine(change, &problem)) {
      *report = End(*report, ZARNNETCHANGE_FAILED, problem);
      return false;
    }
    Settle(change, &findings);
    if (ResultOf(findings.List(), false) != ZARNNETCHANGE_USAGE) {
      Compare(change);
      JudgeByRules(*change, &findings);
    }
  }
  report->findings = findings.List();
  report->result = ResultOf(report->findings, change->options.insist);
  report->reason = ReasonOf(report->findings, report->result);
  return report->result == ZARNNETCHANGE_DONE;
}

void NotePlanned(const Change& change, Report* report) {
  for (Step& step : StepsOf(change)) {
    StepReport& row = report->steps.emplace_back();
    row.values = ValuesAt(step.path, change.differences, DocumentShape());
    row.step = std::move(step);
  }
}

// ---- acting

// The machine as the copy begins; none when there is no copy.
std::optional<Generation> KeptBeforeEntering(const EnterCopy& enter, std::string* problem) {
  auto generation = KeepGeneration(problem);
  if (generation && !enter(*generation, problem)) generation.reset();
  return generation;
}

const Progress kUntold = [](std::size_t, std::size_t, const std::string&, double) {};

// A value that a setter does not take is named: which of several it is, the setter does not tell.
std::string ReasonOf(const StepReport& step) {
  const char* const words = ZARNNetErrorText(step.code);
  if (step.code == 0 || words == nullptr)
    return step.values.empty() ? "a program failed"
                               : "a program failed, or one of these is not taken: " + step.values;
  if (step.code != ZARNNETERR_BAD_PARAMETER) return words;
  return step.step.setter +
         (step.values.empty() ? " does not take what is set up" : " does not take " + step.values);
}

// False when the step failed, with the setter's code in words.
bool Take(StepReport* report) {
  ZARNNetErrorClear();
  if (report->step.call()) {
    report->state = StepReport::State::kDone;
    return true;
  }
  report->state = StepReport::State::kFailed;
  report->code = KOPACErrGet();
  report->reason = ReasonOf(*report);
  if (report->code != 0)
    report->place = std::string(KOPACErrorGetFile()) + ":" + std::to_string(KOPACErrorGetLine());
  return false;
}

bool TakeAll(Report* report, const Progress& progress) {
  const auto begin = Clock::now();
  for (std::size_t i = 0; i < report->steps.size(); ++i) {
    const std::chrono::duration<double> past = Clock::now() - begin;
    progress(i + 1, report->steps.size(), report->steps[i].step.what, past.count());
    if (!Take(&report->steps[i])) return false;
  }
  return true;
}

// The file or program that it was about, and what to do.
std::string AdviceOn(const StepReport& step) {
  const auto& touches = step.step.touches;
  if (touches.empty()) return {};
  switch (step.code) {
    case ZARNNETERR_OPEN:
    case ZARNNETERR_WRITE:
    case ZARNNETERR_RENAME:
      return " (" + touches.front() + "): see that the disk is neither full nor read-only";
    case ZARNNETERR_READ:
    case ZARNNETERR_UNEXPECTED_CONTENT:
      return " (" + touches.front() + "): see what the file holds";
    case ZARNNETERR_BAD_PARAMETER:
      return ": give it another value";
    case ZARNNETERR_LOCK:
      return ": try again when the other has ended";
    default:
      return " (" + touches.back() + "): the system log has more";
  }
}

std::string FailureOf(const Report& report) {
  for (const StepReport& step : report.steps) {
    if (step.state == StepReport::State::kFailed)
      return "could not " + step.step.what + ": " + step.reason + AdviceOn(step);
  }
  return "a step failed";
}

void PutBackAndTell(const Change& change, const Generation& generation, Report* report) {
  NotePutBack(PutAllBack(change, ServicesOf(*report, Which::kTaken), generation), report);
}

// ---- comparing

bool IsAwaited(const Difference& difference, const std::vector<Remark>& awaited) {
  const bool stored = !difference.files || *difference.files == difference.wanted;
  return stored && std::any_of(awaited.begin(), awaited.end(), [&](const Remark& remark) {
           return Leads(remark.path, difference.path);
         });
}

// Reads the machine again. What is left of the differences is not as wished.
bool CompareAgain(Change* change, Report* report, std::string* problem) {
  Change now = *change;
  if (!ReadMachine(&now, problem)) return false;
  for (const Section& section : Sections()) {
    if (change->wish.contains(section.name)) section.await(*change, now.live, &report->awaited);
  }
  report->differences =
      DifferencesOf(change->wish, change->wanted, now.before, now.live, DocumentShape());
  std::erase_if(report->differences, [&](const Difference& difference) {
    return IsAwaited(difference, report->awaited);
  });
  return true;
}

// A difference that an address's detection of duplicates or a link's start makes settles by itself.
bool CompareUntilSettled(Change* change, Report* report, std::string* problem) {
  constexpr int kLooks = 5;
  constexpr useconds_t kPause = 100000;
  for (int look = 1;; ++look) {
    report->awaited.clear();
    if (!CompareAgain(change, report, problem)) return false;
    const bool mayCome = std::any_of(
        report->differences.begin(), report->differences.end(), [](const Difference& difference) {
          return difference.kernel && *difference.kernel != difference.wanted;
        });
    if (!mayCome || look == kLooks) return true;
    ::usleep(kPause);
  }
}

std::string Side(const char* name, const std::optional<Json>& found) {
  if (!found) return {};
  const Json shown = found->is_object() ? Json("there") : *found;
  return std::string(", ") + name + (shown.is_null() ? " nothing" : " " + shown.dump());
}

std::string OtherwiseReason(const Report& report) {
  const Json first = ToJson(report.differences, DocumentShape()).front();
  const auto side = [&](const char* name) -> std::optional<Json> {
    return first.contains(name) ? std::optional(first[name]) : std::nullopt;
  };
  const std::string wanted = first["wanted"].is_null() ? "nothing" : first["wanted"].dump();
  return "the steps succeeded, and the machine is not as wished: " + TextOf(first["path"]) +
         ": wanted " + wanted + Side("the files have", side("files")) +
         Side("the kernel has", side("kernel"));
}

std::string DoneReason(const Report& report) {
  if (report.steps.empty()) return "the machine is as wished already";
  if (!report.awaited.empty()) return "done; " + report.awaited.front().sentence;
  if (!report.lost.empty()) return "done; " + report.lost.front();
  return "done";
}

Report ActAndCompare(Change* change, const Generation& generation, Report report,
                     const Progress& progress) {
  if (!TakeAll(&report, progress)) {
    report = End(report, ZARNNETCHANGE_FAILED, FailureOf(report));
    PutBackAndTell(*change, generation, &report);
    return report;
  }
  const Repairs repairs = Repair(*change, generation);
  std::string problem;
  if (!CompareUntilSettled(change, &report, &problem)) {
    report = End(report, ZARNNETCHANGE_FAILED, problem);
    PutBackAndTell(*change, generation, &report);
    return report;
  }
  const bool asWished = report.differences.empty();
  if (!asWished) report = End(report, ZARNNETCHANGE_OTHERWISE, OtherwiseReason(report));
  if (!asWished && !change->options.keep) {
    PutBackAndTell(*change, generation, &report);
    return report;
  }
  report.repaired = repairs.made;
  report.lost = repairs.lost;
  if (asWished) return End(report, ZARNNETCHANGE_DONE, DoneReason(report));
  report.reason += "; kept as it is";
  return report;
}

Report ApplyLocked(Change* change, Report report, const Progress& progress) {
  std::string stale = WhyPlanIsStale(change->options.plan, change->wish, change->options);
  if (!stale.empty()) return End(report, ZARNNETCHANGE_REFUSED, std::move(stale));
  if (!Judge(change, &report)) {
    if (report.result == ZARNNETCHANGE_REFUSED) RecordRefusal(*change, &report);
    return report;
  }
  NotePlanned(*change, &report);
  if (report.steps.empty()) return End(report, ZARNNETCHANGE_DONE, DoneReason(report));
  const NetworkLock network(change->options.wait);
  if (!network.IsHeld()) return End(report, ZARNNETCHANGE_BUSY, NetworkLock::HolderSentence());
  std::string problem;
  const auto generation = KeepGeneration(&problem);
  if (!generation) return End(report, ZARNNETCHANGE_FAILED, problem);
  const auto make = [&](Report made) {
    return ActAndCompare(change, *generation, std::move(made), progress);
  };
  const auto putBack = [&](Report made) {
    PutBackAndTell(*change, *generation, &made);
    return made;
  };
  const auto services = ServicesOf(report, Which::kAll);
  return MakeRecorded({*change, *generation, services}, std::move(report), {make, putBack});
}

Change Begin(const Json& wish, const Options& options) {
  Change change;
  change.wish = wish;
  change.options = options;
  return change;
}

}  // namespace

Report Compare(const Json& wish, const Options& options) {
  Change change = Begin(wish, options);
  Report report;
  Findings findings;
  for (const Fault& fault : FaultsOf(wish, DocumentShape()))
    findings.Add("document", fault.path, Severity::kUsage, fault.sentence);
  if (findings.List().empty()) {
    std::string problem;
    if (!ReadMachine(&change, &problem)) return End(report, ZARNNETCHANGE_FAILED, problem);
    Settle(&change, &findings);
    Compare(&change);
  }
  report.findings = findings.List();
  const int result = ResultOf(report.findings, true);
  if (result == ZARNNETCHANGE_USAGE) return End(report, result, ReasonOf(report.findings, result));
  report.differences = change.differences;
  if (report.differences.empty())
    return End(report, ZARNNETCHANGE_DONE, "the machine is as wished");
  return End(report, ZARNNETCHANGE_OTHERWISE, "the machine is not as wished");
}

Report Check(const Json& wish, const Options& options) {
  Change change = Begin(wish, options);
  Report report;
  if (Judge(&change, &report)) NotePlanned(change, &report);
  return report;
}

Report Rehearse(const Json& wish, const Options& options, const EnterCopy& enter) {
  Change change = Begin(wish, options);
  Report report;
  if (!Judge(&change, &report)) return report;
  NotePlanned(change, &report);
  std::erase_if(report.steps,
                [&](const StepReport& row) { return !Leads(options.below, row.step.path); });
  if (report.steps.empty()) return End(report, ZARNNETCHANGE_DONE, DoneReason(report));
  if (!options.below.empty()) return RehearseSteps(std::move(report), enter);
  std::string problem;
  const auto generation = KeptBeforeEntering(enter, &problem);
  if (!generation) return End(report, ZARNNETCHANGE_FAILED, problem);
  return ActAndCompare(&change, *generation, std::move(report), kUntold);
}

Report RehearseSteps(Report report, const EnterCopy& enter) {
  std::string problem;
  const auto generation = KeptBeforeEntering(enter, &problem);
  if (!generation) return End(report, ZARNNETCHANGE_FAILED, problem);
  if (!TakeAll(&report, kUntold)) return End(report, ZARNNETCHANGE_FAILED, FailureOf(report));
  return End(report, ZARNNETCHANGE_DONE, "done");
}

Report Apply(const Json& wish, const Options& options, const Progress& progress) {
  Change change = Begin(wish, options);
  if (::geteuid() != 0) {
    Report report;
    if (Judge(&change, &report))
      return End(report, ZARNNETCHANGE_NOT_ALLOWED, "only root may change the network");
    return report;
  }
  const ChangeLock lock(options.program, options.wait);
  if (!lock.IsHeld()) return Busy({});
  const Leftover leftover = SettleLeftover(options);
  if (leftover.IsInTheWay(options)) return InTheWay(leftover, {});
  Report report;
  if (leftover.putBack) report.recovered = leftover.putBack->reason;
  return ApplyLocked(&change, std::move(report), progress);
}

}  // namespace change
