// SPDX-License-Identifier: Apache-2.0
// zarnnetctl confirm, history, undo and recover: the changes that were made.
#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>
#include <zarnnetchange/change.h>

#include "commands.h"
#include "grammar.h"
#include "made_changes.h"
#include "output.h"
#include "plan.h"
#include "wish.h"

namespace tool {
namespace {

struct Asked {
  std::optional<int> number;
  std::optional<int> extend;
  bool starting = false;

  [[nodiscard]] Json Options() const {
    Json options{{"program", "zarnnetctl"}};
    if (number) options["number"] = *number;
    if (extend) options["extend"] = *extend;
    if (starting) options["starting"] = true;
    return options;
  }
};

Word AddNumber(const Verb& verb, Asked& asked, const std::string& description) {
  constexpr int kMost = 2000000000;
  const auto any = [](const std::string& /*value*/) { return std::string(); };
  return verb.AddOption("N", asked.number, description).Within(1, kMost).Checked(any, kChangeShape);
}

void Undo(const Asked& asked, Context* context) {
  Json options = OptionsOf(*context);
  options.update(asked.Options());
  if (context->change.plan) return ShowPlan(*context, nullptr, options.dump());
  Report report;
  ZARNNetChangeUndo(options.dump().c_str(), nullptr, nullptr, report.Out());
  TellReport(*context, report);
}

// ---- history

void PrintAll(const Json& changes) {
  std::vector<Row> rows{Headings({"NUMBER", "STATE", "BEGAN", "WHO", "WHAT"})};
  for (const Json& change : changes)
    rows.push_back(RowOf(change));
  PrintList(rows, "changes");
}

std::string Milliseconds(const Json& change) {
  constexpr double kSecond = 1000;
  return std::to_string(std::lround(change.value("seconds", 0.0) * kSecond));
}

void PrintOne(const Json& change) {
  const auto line = [](const char* name, const std::string& value) {
    if (!value.empty()) std::cout << name << value << '\n';
  };
  line("change   ", WrittenOut(change["number"]) + ", " + change.value("state", ""));
  line("began    ", change.value("began", "") + ", took " + Milliseconds(change) + " ms");
  line("who      ", Who(change) + " by " + change.value("program", ""));
  line("from     ", change.value("from", ""));
  line("settled  ", change.value("settled", ""));
  line("result   ", WrittenOut(change["result"]) + ": " + change.value("reason", ""));
  if (!change.contains("undoes")) line("wish     ", change["wish"].dump());
  for (const Json& step : change["steps"])
    line("step     ", step);
  for (const Json& problem : change.value("problems", Json::array()))
    line("problem  ", problem);
  for (const Json& file : change["files"]) {
    std::cout << (file.contains("diff") ? file.value("diff", "")
                                        : file.value("path", "") + " was changed\n");
  }
}

void History(const Asked& asked, Context* context) {
  Report report;
  ZARNNetChangeHistory(asked.Options().dump().c_str(), report.Out());
  const Json history = report.AsJson();
  if (history.value("result", ZARNNETCHANGE_FAILED) != ZARNNETCHANGE_DONE)
    return TellReport(*context, report);
  const char* const name = asked.number ? "change" : "changes";
  if (context->json) {
    PrintJson(name, history[name]);
  } else if (asked.number) {
    PrintOne(history[name]);
  } else {
    PrintAll(history[name]);
  }
}

}  // namespace

void AddHistoryCommands(const Group& app, Context& context) {
  auto asked = std::make_shared<Asked>();
  const Verb confirm = AddVerb(app, context, "confirm", "Confirms the change that waits for it",
                               "  zarnnetctl confirm\n  zarnnetctl confirm 17 --extend 120");
  AddNumber(confirm, *asked, "The number of the change");
  confirm.AddOption("--extend", asked->extend, "Seconds more, in place of a confirmation")
      .Within(1, 86400);
  confirm.Run([asked, &context] {
    Report report;
    ZARNNetChangeConfirm(asked->Options().dump().c_str(), report.Out());
    TellReport(context, report);
  });
  const Verb history = AddVerb(app, context, "history", "Lists the changes, or shows one",
                               "  zarnnetctl history\n  zarnnetctl history 17");
  AddNumber(history, *asked, "The number of the change to show");
  history.Run([asked, &context] { History(*asked, &context); });
  const Verb undo = AddChange(app, context, "undo", "Goes back to before a change",
                              "  zarnnetctl undo 17 --plan\n  zarnnetctl undo 17 --confirm 60");
  AddNumber(undo, *asked, "The number of the change; the last one without it");
  undo.Run([asked, &context] { Undo(*asked, &context); });
  const Verb recover =
      AddVerb(app, context, "recover", "Puts back what was not confirmed or not ended",
              "  zarnnetctl recover --starting");
  recover.AddFlag("--starting", asked->starting, "The machine starts, nothing is configured yet");
  recover.Run([asked, &context] {
    Report report;
    ZARNNetChangeRecover(asked->Options().dump().c_str(), report.Out());
    TellReport(context, report);
  });
}

}  // namespace tool
