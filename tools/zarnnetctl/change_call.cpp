// SPDX-License-Identifier: Apache-2.0
#include "change_call.h"

#include "verbs.h"

namespace tool {
namespace {

// A text of the library of changes, freed at the end of its scope.
class Text {
 public:
  Text() = default;
  ~Text() { ZARNNetChangeFree(text_); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  char** Out() { return &text_; }
  template <class Parsed>
  [[nodiscard]] Parsed As() const {
    return Parsed::parse(text_ != nullptr ? text_ : "{}", nullptr, false);
  }

 private:
  char* text_ = nullptr;
};

// What stands in a file need not be UTF-8.
std::string Written(const Document& wish) {
  return wish.dump(-1, ' ', false, Document::error_handler_t::replace);
}

}  // namespace

Answered CompareWish(const Document& wish) {
  Text text;
  const int result = ZARNNetChangeCompare(Written(wish).c_str(), nullptr, text.Out());
  return {result, text.As<Json>()};
}

Answered CheckWish(const Document& wish, const Json& options) {
  Text text;
  const int result = ZARNNetChangeCheck(Written(wish).c_str(), options.dump().c_str(), text.Out());
  return {result, text.As<Json>()};
}

Answered ApplyWish(const Document& wish, const Json& options) {
  Text text;
  const int result = ZARNNetChangeApply(Written(wish).c_str(), options.dump().c_str(), nullptr,
                                        nullptr, text.Out());
  return {result, text.As<Json>()};
}

Json ReadMachine(const Json& options) {
  Text text;
  const int result = ZARNNetChangeRead(options.dump().c_str(), text.Out());
  Json state = text.As<Json>();
  if (result == ZARNNETCHANGE_DONE) return state;
  throw Failure("cannot read the state", std::nullopt, state.value("reason", "out of memory"));
}

Document StateSchema() {
  Text text;
  ZARNNetChangeSchema(text.Out());
  return text.As<Document>();
}

Document ReadWish(const std::string& path) {
  Mistake mistake;
  if (auto wish = ReadDocument(ReadText(path), &mistake)) return *wish;
  const std::string line = mistake.line == 0 ? "" : "line " + std::to_string(mistake.line) + ": ";
  throw WrongUsage(path == "-" ? "standard input" : path, line + mistake.sentence);
}

}  // namespace tool
