// SPDX-License-Identifier: Apache-2.0
// zarnnet-rehearsal: reads a wish from its standard input, makes the change in a private copy of
// the machine and tells on its standard output what that changed. The library of changes starts it.
#include <array>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "program/changes.h"
#include "program/journal.h"
#include "program/private_copy.h"
#include "rules/rule.h"
#include "steps/calls.h"
#include "steps/engine.h"
#include "steps/journal.h"
#include "steps/undo.h"

namespace {

using change::Json;
using rehearsal::Machine;

std::string ReadRequest() {
  std::string text;
  std::array<char, 16384> block{};
  for (ssize_t length = 0; (length = ::read(STDIN_FILENO, block.data(), block.size())) > 0;)
    text.append(block.data(), static_cast<std::size_t>(length));
  return text;
}

void Answer(const Json& answer) {
  const std::string text = answer.dump(-1, ' ', false, Json::error_handler_t::replace);
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t length = ::write(STDOUT_FILENO, text.data() + at, text.size() - at);
    if (length <= 0) return;
    at += static_cast<std::size_t>(length);
  }
}

change::Options OptionsOf(const Json& json) {
  change::Options options;
  options.insist = change::IsTrue(change::Member(json, "insist"));
  options.keep = change::IsTrue(change::Member(json, "keep"));
  options.number = change::NumberOf(change::Member(json, "number"));
  options.probe = change::IsTrue(change::Member(json, "probe"));
  options.rehearsing = true;
  options.below = change::Path(change::TextOf(change::Member(json, "below")));
  for (const std::string& path : change::TextsOf(change::Member(json, "restart")))
    options.restart.emplace_back(path);
  return options;
}

// What was there when the rehearsal began.
struct Copy {
  change::Generation generation;
  change::Kernel kernel;  // the copy's, which may lack what the kernel cannot make
};

// What is true of any copy of this machine.
void NoteLimits(const Machine& machine, const change::Options& options) {
  using rehearsal::kRemarkRecord;
  using rehearsal::Note;
  for (const std::string& port : machine.ports)
    Note({kRemarkRecord, port,
          "a cable's end stands in for it: what its driver, its cable and its "
          "partner would say is not known"});
  if (!machine.jobsAreKnown)
    Note({kRemarkRecord, "jobs", "which of them run cannot be asked: they were taken as stopped"});
  if (!options.probe)
    Note({kRemarkRecord, "addresses", "nobody was asked whether somebody else has them"});
}

std::optional<Copy> MakeCopy(const change::Generation& generation, const change::Options& options,
                             std::string* problem) {
  const Machine machine = rehearsal::ReadMachine(generation.kernel);
  if (!rehearsal::EnterCopy(generation, machine, problem)) return std::nullopt;
  NoteLimits(machine, options);
  auto kernel = change::ReadKernel();
  if (!kernel) {
    *problem = "the copy's kernel cannot be asked";
    return std::nullopt;
  }
  return Copy{generation, std::move(*kernel)};
}

Json PlanOf(const change::Report& report, const std::optional<Copy>& copy) {
  Json plan = change::ToJson(report);
  for (const char* list : {"files", "kernel", "programs", "events", "services", "notRehearsed"})
    plan[list] = Json::array();
  if (!copy) return plan;
  rehearsal::AddCalls(&plan);
  plan["files"] = rehearsal::FileChanges(copy->generation);
  if (const auto now = change::ReadKernel())
    plan["kernel"] = rehearsal::KernelChanges(copy->kernel, *now);
  return plan;
}

// A call may succeed and leave everything as it is.
void NoteNothing(Json* plan) {
  const bool done = (*plan)["result"] == ZARNNETCHANGE_DONE;
  if (done && (*plan)["files"].empty() && (*plan)["kernel"].empty())
    (*plan)["reason"] = "nothing would be different";
}

}  // namespace

namespace {

change::Report RefusedByServer(const std::string& words) {
  change::Report report;
  report.findings.push_back(change::DhcpServerRefuses(words));
  const change::Finding& finding = report.findings.front();
  return change::End(report, ZARNNETCHANGE_REFUSED,
                     finding.path.to_string() + ": " + finding.sentence);
}

// Runs the rehearsal and answers.
void RehearseAndAnswer() {
  const auto begin = std::chrono::steady_clock::now();
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const Json request = Json::parse(ReadRequest(), nullptr, false);
  if (!request.is_object()) ::_exit(2);
  const change::Options options = OptionsOf(change::Member(request, "options"));
  std::optional<Copy> copy;
  const change::EnterCopy enter = [&](const change::Generation& generation, std::string* problem) {
    copy = MakeCopy(generation, options, problem);
    return copy.has_value();
  };
  const Json& wish = change::Member(request, "wish");
  const Json& calls = change::Member(request, "calls");
  change::Report report = !calls.is_null() ? change::RehearseCalls(calls, enter)
                          : wish.is_null() ? change::RehearseUndo(options, enter)
                                           : change::Rehearse(wish, options, enter);
  const std::string refusal = wish.is_null() ? std::string() : rehearsal::ServersRefusal();
  if (!refusal.empty()) {  // the change itself would end before its first step
    report = RefusedByServer(refusal);
    copy.reset();
  }
  Json plan = PlanOf(report, copy);
  change::Put(&plan, "refusal", refusal);
  if (!calls.is_null()) NoteNothing(&plan);
  const std::chrono::duration<double> past = std::chrono::steady_clock::now() - begin;
  plan["seconds"] = past.count();
  Answer(plan);
  // Whoever reads it ends this process, and the copy.
  constexpr unsigned kLongest = 30;
  ::shutdown(STDOUT_FILENO, SHUT_WR);
  ::sleep(kLongest);
}

}  // namespace

// Nothing is left to tidy up: the copy goes with this process.
int main() try {
  RehearseAndAnswer();
  ::_exit(0);
} catch (...) {
  ::_exit(1);
}
