// SPDX-License-Identifier: Apache-2.0
#include "change_call.h"

#include "verbs.h"
#include "waiting.h"

namespace tool {

// What stands in a file need not be UTF-8.
std::string TextOfWish(const Document& wish) {
  return wish.dump(-1, ' ', false, Document::error_handler_t::replace);
}

Answered CompareWish(const Document& wish) {
  Report text;
  const int result = ZARNNetChangeCompare(TextOfWish(wish).c_str(), nullptr, text.Out());
  return {result, text.AsJson()};
}

Answered CheckWish(const Document& wish, const Json& options) {
  Report text;
  const int result =
      ZARNNetChangeCheck(TextOfWish(wish).c_str(), options.dump().c_str(), text.Out());
  return {result, text.AsJson()};
}

Json ReadMachine(const Json& options) {
  Report text;
  const int result = ZARNNetChangeRead(options.dump().c_str(), text.Out());
  Json state = text.AsJson();
  if (result == ZARNNETCHANGE_DONE) return state;
  throw Failure("cannot read the state", std::nullopt, state.value("reason", "out of memory"));
}

Document StateSchema() {
  Report text;
  ZARNNetChangeSchema(text.Out());
  return Document::parse(text.Text(), nullptr, false);
}

std::vector<std::pair<std::string, std::string>> LastChanges() {
  constexpr std::size_t kMost = 20;
  Report text;
  ZARNNetChangeHistory(nullptr, text.Out());
  const Json changes = text.AsJson().value("changes", Json::array());
  std::vector<std::pair<std::string, std::string>> last;
  for (auto change = changes.rbegin(); change != changes.rend() && last.size() < kMost; ++change)
    last.emplace_back(WrittenOut((*change)["number"]), change->value("state", ""));
  return last;
}

Document ReadWish(const std::string& path) {
  Mistake mistake;
  if (auto wish = ReadDocument(ReadText(path), &mistake)) return *wish;
  const std::string line = mistake.line == 0 ? "" : "line " + std::to_string(mistake.line) + ": ";
  throw WrongUsage(path == "-" ? "standard input" : path, line + mistake.sentence);
}

}  // namespace tool
