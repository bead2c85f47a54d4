// SPDX-License-Identifier: Apache-2.0
#include "steps/put_back.h"

#include <algorithm>
#include <unistd.h>

#include "document/section.h"
#include "texts.h"

namespace change {
namespace {

bool Follows(const Section& section, const StepReport& step, Which which) {
  const bool own = Leads(Path() / section.name, step.step.path);
  const bool server = std::string(section.name) == "dhcp_server";
  const bool meant = which == Which::kAll || step.state != StepReport::State::kPlanned;
  return meant &&
         (own ? step.step.phase == Phase::kServices : server && step.step.phase < Phase::kLink);
}

// What is not as it was afterwards.
std::vector<std::string> TryToPutBack(const Change& change,
                                      const std::vector<std::string>& services,
                                      const Generation& generation) {
  PutBack(generation);
  std::vector<std::string> problems;
  for (const Section& section : Sections()) {
    const bool follows = Has(services, section.name);
    if (follows && !section.revive(change))
      problems.push_back(std::string(section.name) + " does not run as it did");
  }
  for (std::string& difference : DifferencesFrom(generation))
    problems.push_back(std::move(difference));
  return problems;
}

}  // namespace

std::vector<std::string> ServicesOf(const Report& report, Which which) {
  std::vector<std::string> names;
  for (const Section& section : Sections()) {
    if (std::any_of(report.steps.begin(), report.steps.end(),
                    [&](const StepReport& step) { return Follows(section, step, which); }))
      names.emplace_back(section.name);
  }
  return names;
}

std::vector<std::string> PutAllBack(const Change& change, const std::vector<std::string>& services,
                                    const Generation& generation) {
  // What went wrong on the way need not go wrong twice, and what was started or stopped last, a
  // DHCP client or a link, comes or goes a moment later.
  constexpr int kTries = 3;
  constexpr useconds_t kPause = 100000;
  for (int i = 1;; ++i) {
    std::vector<std::string> problems = TryToPutBack(change, services, generation);
    if (problems.empty() || i == kTries) return problems;
    ::usleep(kPause);
  }
}

}  // namespace change
