// SPDX-License-Identifier: Apache-2.0
// A plan for people: what would be refused, the steps, files as differences, programs, events, the
// kernel, and what could not be rehearsed.
#include "plan.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <zarnnetchange/change.h>

#include "query.h"
#include "waiting.h"
#include "wish.h"

namespace tool {
namespace {

std::string Said(const Json& object, const char* field) {
  return object.value(field, std::string());
}

void PrintHeading(const char* heading) {
  PrintLine({{heading, Tone::kHeading}});
}

// The rows of a list of the plan under their heading; nothing for an empty list.
void PrintRows(const Json& plan, const char* list, const char* heading,
               std::string (*text)(const Json&)) {
  const Json rows = plan.value(list, Json::array());
  if (rows.empty()) return;
  PrintHeading(heading);
  for (const Json& row : rows)
    PrintLine({{"  " + text(row)}});
}

std::string FindingText(const Json& finding) {
  return Said(finding, "path") + ": " + Said(finding, "sentence");
}

std::string StepText(const Json& step) {
  const std::string reason = Said(step, "reason");
  return Said(step, "what") + " (" + Said(step, "setter") + ")" +
         (reason.empty() ? "" : ": it would fail: " + reason);
}

std::string ProgramText(const Json& program) {
  std::string text = Said(program, "program");
  for (const std::string& argument : TextsOf(program["arguments"]))
    text += " " + argument;
  const std::string within = Said(program, "within");
  return text + (within.empty() ? "" : "  (by " + within + ")");
}

std::string EventText(const Json& event) {
  std::string text = Said(event, "event") + " " + Said(event, "stage");
  for (const auto& [name, value] : event["arguments"].items())
    text += " " + name + "=" + value.get<std::string>();
  return text;
}

std::string ServiceText(const Json& service) {
  const auto down = service.find("downAtLeastSeconds");
  return Said(service, "name") + ": " + Said(service, "action") +
         (down == service.end() ? "" : ", down for at least " + WrittenOut(*down) + " s");
}

std::string KernelText(const Json& change) {
  const auto side = [&](const char* name) {
    return change[name].is_null() ? std::string("nothing") : change[name].get<std::string>();
  };
  return Said(change, "setting") + ": " + side("before") + " -> " + side("after");
}

std::string RemarkText(const Json& remark) {
  return Said(remark, "what") + ": " + Said(remark, "reason");
}

// "mode 0644 -> 0600", for what is other than before.
std::string SidesText(const Json& file, const char* name) {
  if (!file.contains(name)) return {};
  const Json& sides = file[name];
  return ", " + std::string(name) + " " + sides.value("before", std::string("none")) + " -> " +
         sides.value("after", std::string("none"));
}

Tone ToneOf(const std::string& line) {
  if (line.starts_with("+")) return Tone::kGood;
  return line.starts_with("-") ? Tone::kBad : Tone::kPlain;
}

void PrintFiles(const Json& files) {
  if (files.empty()) return;
  PrintHeading("Files");
  for (const Json& file : files) {
    PrintLine({{"  " + Said(file, "path") + ": " + Said(file, "change") + SidesText(file, "mode") +
                SidesText(file, "owner")}});
    const std::string diff = Said(file, "diff");
    for (std::size_t at = 0; at < diff.size();) {
      const std::size_t end = std::min(diff.find('\n', at), diff.size());
      const std::string line = diff.substr(at, end - at);
      PrintLine({{"    " + line, ToneOf(line)}});
      at = end + 1;
    }
  }
}

void Print(const Json& plan) {
  PrintLine({{"Plan: " + Said(plan, "reason")}});
  PrintRows(plan, "findings", "Findings", FindingText);
  PrintRows(plan, "steps", "Steps", StepText);
  PrintFiles(plan.value("files", Json::array()));
  PrintRows(plan, "programs", "Programs, in this order", ProgramText);
  PrintRows(plan, "events", "Plugin events", EventText);
  PrintRows(plan, "services", "Services", ServiceText);
  PrintRows(plan, "kernel", "Kernel", KernelText);
  PrintRows(plan, "notRehearsed", "Not rehearsed", RemarkText);
}

}  // namespace

void ShowPlan(Context& context, const std::string& wish, const std::string& options) {
  Report plan;
  context.status = ZARNNetChangePlan(wish.c_str(), options.c_str(), plan.Out());
  if (context.json) {
    std::cout << plan.Text() << '\n';
  } else {
    Print(plan.AsJson());
  }
}

}  // namespace tool
