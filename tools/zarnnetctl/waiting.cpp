// SPDX-License-Identifier: Apache-2.0
// The countdown is for the eye alone: who holds the time is the library's watcher, also when this
// terminal is cut off.
#include "waiting.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

namespace tool {
namespace {

constexpr int kSecond = 1000;

// A line typed within a second; null for none. The end of the input is an empty one.
std::optional<std::string> LineWithinASecond() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (::poll(&input, 1, kSecond) <= 0) return std::nullopt;
  std::string line;
  std::getline(std::cin, line);
  return line;
}

void Tell(const Report& report, int result, Context* context) {
  std::cerr << report.AsJson().value("reason", "no memory") << '\n';
  context->status = result;
}

void Keep(const std::string& options, Context* context) {
  Report report;
  Tell(report, ZARNNetChangeConfirm(options.c_str(), report.Out()), context);
}

void GoBack(const std::string& options, Context* context) {
  Report report;
  const int result = ZARNNetChangeUndo(options.c_str(), nullptr, nullptr, report.Out());
  // What was asked for is not in effect.
  Tell(report, result == ZARNNETCHANGE_DONE ? ZARNNETCHANGE_FAILED : result, context);
}

// It was confirmed elsewhere, or is back by now; the library puts it back if nobody else has.
void TellWhatCameOfIt(int number, const std::string& options, Context* context) {
  Report report;
  ZARNNetChangeHistory(options.c_str(), report.Out());
  const Json change = report.AsJson().value("change", Json::object());
  const std::string state = change.value("state", "unknown");
  std::cerr << "change " << number << ": " << state << '\n';
  context->status = state == "kept" ? ZARNNETCHANGE_DONE : ZARNNETCHANGE_FAILED;
}

}  // namespace

Report::~Report() {
  ZARNNetChangeFree(text_);
}

Json Report::AsJson() const {
  return Json::parse(Text(), nullptr, false);
}

void AskToConfirm(const Json& report, Context* context) {
  if (context->json || context->quiet || !report.contains("confirm") ||
      ::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0)
    return;
  const int number = report["confirm"].value("number", 0);
  const std::string options = Json{{"number", number}, {"program", "zarnnetctl"}}.dump();
  for (int left = report["confirm"].value("seconds", 0); left > 0; --left) {
    std::cerr << "\rChange " << number << " goes back in " << left << " s. Keep it? [y/n] ";
    const auto line = LineWithinASecond();
    if (!line) continue;
    if (line->starts_with('y')) return Keep(options, context);
    // An end of the input is no answer of anybody: the time goes on without us.
    if (!std::cin) break;
    if (line->starts_with('n')) return GoBack(options, context);
  }
  std::cerr << '\n';
  if (std::cin) TellWhatCameOfIt(number, options, context);
}

}  // namespace tool
