// SPDX-License-Identifier: Apache-2.0
// Documents read from files, and written for people to edit.
#include "document.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "failure.h"
#include "yaml.h"

namespace tool {
namespace {

constexpr char kBlanks[] = " \t\r\n";

// ---- JSON

// Told of what a text has, before it is read: the names of each open object are kept, as the last
// of two that are the same would silently win.
class Look : public nlohmann::json_sax<Document> {
 public:
  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_integer(number_integer_t /*value*/) override { return true; }
  bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
  bool string(string_t& /*value*/) override { return true; }
  bool binary(binary_t& /*value*/) override { return true; }
  bool start_object(std::size_t /*size*/) override { return Open(); }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t /*size*/) override { return Open(); }
  bool end_array() override { return Close(); }
  bool key(string_t& name) override {
    if (open_.back().insert(name).second) return true;
    problem_ = "'" + name + "' stands there twice";
    return false;
  }
  // The reading itself tells of it.
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    stopped_ = position;
    return false;
  }
  [[nodiscard]] std::size_t StoppedAt() const { return stopped_; }
  [[nodiscard]] const std::string& Problem() const { return problem_; }

 private:
  bool Open() {
    constexpr std::size_t kDeepest = 32;
    open_.emplace_back();
    if (open_.size() <= kDeepest) return true;
    problem_ = "the document is nested too deeply";
    return false;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }

  std::vector<std::set<std::string>> open_;
  std::string problem_;
  std::size_t stopped_ = 0;
};

std::size_t LineAt(const std::string& text, std::size_t position) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(position, text.size()));
  return 1 + static_cast<std::size_t>(std::count(text.begin(), end, '\n'));
}

std::optional<Document> ReadJson(const std::string& text, Mistake* mistake) {
  Look look;
  Document::sax_parse(text, &look);
  if (!look.Problem().empty()) {
    *mistake = {0, look.Problem()};
    return std::nullopt;
  }
  try {
    return Document::parse(text);
  } catch (const Document::exception& error) {  // also a number that no double can be
    const std::string what = error.what();      // behind the library's own "[...] "
    *mistake = {LineAt(text, look.StoppedAt()),
                "this is no JSON: " + what.substr(what.find("] ") + 2)};
    return std::nullopt;
  }
}

// ---- written as YAML

// A text that stands without quotes and is read as that text again.
bool IsPlain(const std::string& text) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._/:-";
  Mistake none;
  const bool plain = !text.empty() && text.find_first_not_of(kPlain) == std::string::npos &&
                     text.front() != '-' && text.front() != ':' && text.back() != ':';
  return plain && ReadYaml(text, &none) == Document(text);
}

std::string Quoted(const std::string& text) {
  return IsPlain(text) ? text
                       : Document(text).dump(-1, ' ', true, Document::error_handler_t::replace);
}

// The schema of a field; of a map that of its values.
const Document& SchemaOf(const Document& schema, const std::string& name) {
  static const Document none = Document::object();
  const auto properties = schema.find("properties");
  if (properties != schema.end() && properties->contains(name)) return properties->at(name);
  const auto values = schema.find("additionalProperties");
  return values != schema.end() && values->is_object() ? *values : none;
}

std::string Remark(const Document& schema) {
  const std::string description = schema.value("description", "");
  return description.empty() ? "" : "  # " + description;
}

void WriteFields(const Document& object, const Document& schema, std::size_t depth,
                 std::string* text);

void WriteField(const std::string& name, const Document& value, const Document& schema,
                std::size_t depth, std::string* text) {
  const std::string indent(2 * depth, ' ');
  if (depth == 0) *text += "\n# " + schema.value("description", name) + "\n";
  *text += indent + Quoted(name) + ":";
  if (value.is_object() && !value.empty()) {
    *text += "\n";
    return WriteFields(value, schema, depth + 1, text);
  }
  if (value.is_array() && !value.empty()) {
    *text += Remark(schema) + "\n";
    for (const Document& item : value)
      *text += indent + "  - " + (item.is_string() ? Quoted(item) : item.dump()) + "\n";
    return;
  }
  *text += " " + (value.is_string() ? Quoted(value) : value.dump());
  *text += (depth == 0 ? "" : Remark(schema)) + "\n";
}

void WriteFields(const Document& object, const Document& schema, std::size_t depth,
                 std::string* text) {
  for (const auto& [name, value] : object.items())
    WriteField(name, value, SchemaOf(schema, name), depth, text);
}

}  // namespace

std::optional<Document> ReadDocument(const std::string& text, Mistake* mistake) {
  if (text.size() > kLongestDocument) {
    *mistake = {0, "the document is too long: 1 MB is all that is read"};
    return std::nullopt;
  }
  const std::size_t begin = text.find_first_not_of(kBlanks);
  const bool json = begin != std::string::npos && (text[begin] == '{' || text[begin] == '[');
  return json ? ReadJson(text, mistake) : ReadYaml(text, mistake);
}

std::string WrittenAsYaml(const Document& document, const Document& schema) {
  std::string text;
  WriteFields(document, schema, 0, &text);
  return text;
}

std::string ReadText(const std::string& path) {
  std::ifstream file;
  if (path != "-") file.open(path);
  std::istream& input = path == "-" ? std::cin : file;
  std::string text(kLongestDocument + 1, '\0');
  input.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (!input && !input.eof())
    throw Failure("cannot read " + path, ZARNNETERR_OPEN, ReasonOf(ZARNNETERR_OPEN));
  text.resize(static_cast<std::size_t>(input.gcount()));
  return text;
}

}  // namespace tool
