// SPDX-License-Identifier: Apache-2.0
// Texts as the dial-in's scripts and the secrets file have them: quoted as one word of a shell.
#include "pppoe/shell_quote.h"

#include "frame/base/text.h"

namespace pppoe {
namespace {

constexpr std::string_view kQuoteInQuotes = R"('"'"')";
constexpr std::size_t kCapacity = 510;  // without the closing quote

// Walks over quoted text and tells what each character is.
class Walk {
 public:
  explicit Walk(std::string_view text) : text_(text) {}

  // The next character that is no quoting; false at the end.
  bool Next(char* character) {
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (quote_ == '\0' && (c == '\'' || c == '"')) {
        quote_ = c;
      } else if (quote_ != '\0' && c == quote_) {
        quote_ = '\0';
      } else {
        quoted_ = quote_ != '\0' || IsEscape(c);
        *character = IsEscape(c) ? text_[at_++] : c;
        return true;
      }
    }
    return false;
  }
  // Does the character of the last Next() stand for itself only?
  [[nodiscard]] bool Quoted() const { return quoted_; }
  [[nodiscard]] std::size_t Position() const { return at_; }

 private:
  [[nodiscard]] bool IsEscape(char c) const {
    if (c != '\\' || at_ >= text_.size() || quote_ == '\'') return false;
    return quote_ == '\0' || std::string_view("\"\\$`#").find(text_[at_]) != std::string_view::npos;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  char quote_ = '\0';
  bool quoted_ = false;
};

}  // namespace

std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    const std::string_view piece = c == '\'' ? kQuoteInQuotes : std::string_view(&c, 1);
    if (quoted.size() + piece.size() > kCapacity) break;
    quoted += piece;
  }
  return quoted + "'";
}

std::string Unquoted(std::string_view word) {
  std::string text;
  Walk walk(word);
  for (char c = '\0'; walk.Next(&c);) {
    if (!walk.Quoted() && (c == ' ' || c == '\t')) break;
    text += c;
  }
  return text;
}

std::optional<SecretsLine> SplitColumns(std::string_view line) {
  Walk walk(line);
  for (char c = '\0'; walk.Next(&c);) {
    if (walk.Quoted() || c != '*') continue;
    return SecretsLine{frame::Trimmed(line.substr(0, walk.Position() - 1)),
                       frame::Trimmed(line.substr(walk.Position()))};
  }
  return std::nullopt;
}

}  // namespace pppoe
