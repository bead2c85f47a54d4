// SPDX-License-Identifier: Apache-2.0
// A wish on its way to the library of changes, and the report in words.
#include "wish.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <zarnnetchange/change.h>

#include "change_call.h"
#include "plan.h"
#include "progress.h"
#include "query.h"
#include "typed_words.h"

namespace tool {
namespace {

// What was typed need not be UTF-8.
std::string TextOf(const Json& wish) {
  return wish.is_null() ? "{}" : wish.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string Shown(const Json& value) {
  return value.is_null() ? "nothing" : WrittenOut(value);
}

// ---- a change that was not made

std::string DifferenceText(const Json& difference) {
  std::string text = TextIn(difference, "path") + ": wanted " + Shown(difference["wanted"]);
  if (difference.contains("files")) text += ", the files have " + Shown(difference["files"]);
  if (difference.contains("kernel")) text += ", the kernel has " + Shown(difference["kernel"]);
  return text;
}

// How sentences that speak of the document are put: as they are, or for who typed a verb.
using Wording = std::string (*)(std::string);

std::string AsItIs(std::string sentence) {
  return sentence;
}

// What stands in the reason is not said again.
void PrintFurther(const std::string& reason, const std::string& text, Wording put) {
  if (reason.find(text) == std::string::npos) std::cerr << "  " << put(text) << '\n';
}

bool CanBeInsistedOn(const Json& findings) {
  bool any = false;
  for (const Json& finding : findings) {
    if (TextIn(finding, "severity") == "refused") return false;
    any = any || TextIn(finding, "severity") == "insisted";
  }
  return any;
}

void PrintUnmade(const Json& report, int result, Wording put) {
  const std::string reason = TextIn(report, "reason");
  std::cerr << "zarnnetctl: " << put(reason) << '\n';
  for (const Json& finding : report.value("findings", Json::array()))
    PrintFurther(reason, TextIn(finding, "path") + ": " + TextIn(finding, "sentence"), put);
  for (const Json& difference : report.value("differences", Json::array()))
    PrintFurther(reason, DifferenceText(difference), put);
  for (const Json& problem : report.value("problems", Json::array()))
    PrintFurther(reason, problem.get<std::string>(), put);
  if (result == ZARNNETCHANGE_REFUSED && CanBeInsistedOn(report.value("findings", Json::array())))
    std::cerr << "  --force does it all the same\n";
  if (result == ZARNNETCHANGE_OTHERWISE && report.contains("restored"))
    std::cerr << "  --keep stores it all the same, for a driver or a partner that is yet to come\n";
}

// ---- a change that was made

void PrintMade(const Json& report, Wording put) {
  const std::string reason = TextIn(report, "reason");
  const auto further = [&](const std::string& text) {
    if (reason.find(text) == std::string::npos) PrintLine({{text}});
  };
  PrintLine({{reason}});
  for (const Json& finding : report.value("findings", Json::array()))
    further("note: " + put(TextIn(finding, "path") + ": " + TextIn(finding, "sentence")));
  for (const Json& sentence : report.value("repaired", Json::array()))
    further("put right: " + sentence.get<std::string>());
  for (const Json& awaited : report.value("awaited", Json::array()))
    further(TextIn(awaited, "sentence"));
  for (const Json& sentence : report.value("lost", Json::array()))
    further(sentence.get<std::string>());
  if (report.contains("confirm")) {
    const Json& confirm = report["confirm"];
    further("change " + WrittenOut(confirm["number"]) + " goes back in " +
            WrittenOut(confirm["seconds"]) + " s unless it is confirmed: zarnnetctl confirm");
  }
}

void PrintSteps(const Json& steps) {
  for (const Json& step : steps) {
    const std::string touches = Join(TextsOf(step["touches"]), ", ");
    PrintLine({{TextIn(step, "state") + ": " + TextIn(step, "what") + " (" +
                TextIn(step, "setter") + (touches.empty() ? "" : ": " + touches) + ")"}});
  }
}

void Print(const Context& context, const Json& report, int result, Wording put) {
  if (context.verbose) PrintSteps(report.value("steps", Json::array()));
  if (result != ZARNNETCHANGE_DONE) return PrintUnmade(report, result, put);
  if (!context.quiet) PrintMade(report, put);
}

void Tell(Context& context, const Report& report, Wording put) {
  const Json json = report.AsJson();
  if (!json.contains("result"))
    throw Failure("cannot make the change", ZARNNETERR_NO_MEMORY, ReasonOf(ZARNNETERR_NO_MEMORY));
  context.status = json["result"].get<int>();
  if (context.json) {
    std::cout << report.Text() << '\n';
  } else {
    Print(context, json, context.status, put);
  }
  AskToConfirm(json, &context);
}

void Apply(Context& context, const std::string& wish, const Json& options, Wording put) {
  const std::string asked = options.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (context.change.plan) return ShowPlan(context, wish.c_str(), asked);
  Report report;
  {
    Progress progress(!context.quiet);
    ZARNNetChangeApply(wish.c_str(), asked.c_str(), &Progress::Tell, &progress, report.Out());
  }
  Tell(context, report, put);
}

}  // namespace

Json OptionsOf(const Context& context) {
  const ChangeOptions& change = context.change;
  Json options{{"program", "zarnnetctl"},
               {"insist", change.force},
               {"keep", change.keep},
               {"wait", change.wait}};
  if (change.confirm) options["confirm"] = *change.confirm;
  return options;
}

void TellReport(Context& context, const Report& report) {
  Tell(context, report, AsItIs);
}

void ApplyWish(Context& context, const std::string& wish, const Json& options) {
  Apply(context, wish, options, AsItIs);
}

void MakeChange(Context& context, const Json& wish, const std::vector<std::string>& restart) {
  Json options = OptionsOf(context);
  options["restart"] = restart;
  Apply(context, TextOf(wish), options, InTypedWords);
}

Json ReadState(const std::vector<std::string>& sections) {
  return ReadMachine({{"sections", sections}});
}

Json ReadLiveState(const std::vector<std::string>& sections) {
  return ReadMachine({{"sections", sections}, {"view", "live"}});
}

Json PartOf(const Json& state, const std::string& path) {
  const Json::json_pointer pointer(path);
  return state.contains(pointer) ? state[pointer] : Json();
}

std::vector<std::string> TextsOf(const Json& list) {
  return list.is_array() ? list.get<std::vector<std::string>>() : std::vector<std::string>();
}

}  // namespace tool
