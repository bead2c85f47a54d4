// SPDX-License-Identifier: Apache-2.0
// A plan for people, a section for each kind of what would happen.
#include "plan.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <zarnnetchange/change.h>

#include "waiting.h"

namespace tool {
namespace {

using Print = void (*)(const Json& row);

// A section that has nothing is left out.
void PrintSection(const Json& plan, const char* list, const char* heading, Print print) {
  const Json rows = plan.value(list, Json::array());
  if (rows.empty()) return;
  PrintLine({{heading, Tone::kHeading}});
  for (const Json& row : rows)
    print(row);
}

void PrintFinding(const Json& finding) {
  PrintLine({{"  " + TextIn(finding, "severity") + ": ", Tone::kBad},
             {TextIn(finding, "path") + ": " + TextIn(finding, "sentence")}});
}

void PrintStep(const Json& step) {
  const bool failed = TextIn(step, "state") == "failed";
  PrintLine({{"  " + TextIn(step, "what")},
             {failed ? ": would fail: " + TextIn(step, "reason") : "", Tone::kBad}});
}

std::string Sides(const Json& file, const char* name) {
  if (!file.contains(name)) return {};
  const Json& sides = file[name];
  const std::string before = TextIn(sides, "before");
  const std::string after = TextIn(sides, "after");
  return std::string(", ") + name + (before.empty() ? " " : " " + before + " -> ") +
         (after.empty() ? before : after);
}

void PrintFile(const Json& file) {
  const std::string change = TextIn(file, "change");
  const bool gone = change == "gone";
  PrintLine({{"  " + change + " " + TextIn(file, "path") +
              (gone ? "" : Sides(file, "mode") + Sides(file, "owner"))}});
  std::istringstream diff(TextIn(file, "diff"));
  for (std::string line; std::getline(diff, line);) {
    if (line.starts_with("--- ") || line.starts_with("+++ ")) continue;
    const Tone tone = line.starts_with("+")   ? Tone::kGood
                      : line.starts_with("-") ? Tone::kBad
                                              : Tone::kPlain;
    PrintLine({{"    " + line, tone}});
  }
}

void PrintProgram(const Json& program) {
  std::string words = "  " + TextIn(program, "program");
  if (program.contains("within")) words = "  " + words;  // of a script
  for (const Json& argument : program.value("arguments", Json::array()))
    words += " " + argument.get<std::string>();
  PrintLine({{words}});
}

void PrintEvent(const Json& event) {
  std::string words = "  " + TextIn(event, "event") + " " + TextIn(event, "stage");
  const Json arguments = event.value("arguments", Json::object());
  for (const auto& [name, value] : arguments.items())
    words += " " + name + "=" + value.get<std::string>();
  PrintLine({{words}});
}

void PrintSetting(const Json& setting) {
  const auto side = [&](const char* name) {
    const std::string text = TextIn(setting, name);
    return text.empty() ? std::string("none") : text;
  };
  PrintLine({{"  " + TextIn(setting, "setting") + ": " + side("before") + " -> " + side("after")}});
}

void PrintService(const Json& service) {
  const std::string down =
      service.contains("downAtLeastSeconds")
          ? ", down for " + service["downAtLeastSeconds"].dump() + " s and what it takes to start"
          : "";
  PrintLine({{"  " + TextIn(service, "name") + ": " + TextIn(service, "action") + down}});
}

void PrintNotRehearsed(const Json& remark) {
  PrintLine({{"  " + TextIn(remark, "what") + ": " + TextIn(remark, "reason")}});
}

void PrintPlan(const Json& plan) {
  PrintLine({{"Outcome: ", Tone::kHeading}, {TextIn(plan, "reason")}});
  PrintSection(plan, "findings", "Findings", PrintFinding);
  PrintSection(plan, "steps", "Steps", PrintStep);
  PrintSection(plan, "files", "Files", PrintFile);
  PrintSection(plan, "programs", "Programs", PrintProgram);
  PrintSection(plan, "events", "Plugin events", PrintEvent);
  PrintSection(plan, "kernel", "Kernel", PrintSetting);
  PrintSection(plan, "services", "Services", PrintService);
  if (const std::string record = TextIn(plan, "record"); !record.empty()) {
    PrintLine({{"Record", Tone::kHeading}});
    PrintLine({{"  the change is recorded in " + record}});
  }
  PrintSection(plan, "notRehearsed", "Not rehearsed", PrintNotRehearsed);
}

}  // namespace

void ShowPlan(Context& context, const char* wish, const std::string& options) {
  Report plan;
  context.status = ZARNNetChangePlan(wish, options.c_str(), plan.Out());
  if (context.json) {
    std::cout << plan.Text() << '\n';
  } else {
    PrintPlan(plan.AsJson());
  }
}

void ShowPlan(Context& context, const std::vector<std::vector<std::string>>& calls) {
  ShowPlan(context, nullptr,
           Json{{"calls", calls}}.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace tool
