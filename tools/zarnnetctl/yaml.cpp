// SPDX-License-Identifier: Apache-2.0
// YAML as libyaml's events: what a text without quotes means, how deep and how large a document
// may be, and what an alias may repeat are this program's own decisions.
#include "yaml.h"

#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <vector>
#include <yaml.h>  // libyaml

namespace tool {
namespace {

constexpr int kDeepest = 32;
constexpr std::size_t kMostValues = 100000;  // aliases repeat what they stand for
constexpr char kTextTag[] = "tag:yaml.org,2002:str";

using Names = std::vector<std::string>;

class Event {
 public:
  explicit Event(yaml_parser_t* parser) : good_(yaml_parser_parse(parser, &event_) == 1) {}
  ~Event() {
    if (good_) yaml_event_delete(&event_);
  }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  [[nodiscard]] bool IsGood() const { return good_; }
  [[nodiscard]] yaml_event_type_t Type() const { return event_.type; }
  [[nodiscard]] std::size_t Line() const { return event_.start_mark.line + 1; }
  [[nodiscard]] const yaml_event_t& Raw() const { return event_; }

 private:
  yaml_event_t event_{};
  bool good_;
};

std::string TextOf(const yaml_char_t* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

// What a scalar without quotes is by the core schema.
Document Resolved(const std::string& text) {
  static const std::regex null("null|Null|NULL|~|"), yes("true|True|TRUE"), no("false|False|FALSE"),
      integer("[-+]?[0-9]{1,18}"), octal("0o[0-7]{1,20}"), hexadecimal("0x[0-9a-fA-F]{1,15}"),
      real("[-+]?(\\.[0-9]+|[0-9]+(\\.[0-9]*)?)([eE][-+]?[0-9]{1,3})?");
  constexpr std::size_t kLongestNumber = 64;
  if (text.size() > kLongestNumber) return text;
  if (std::regex_match(text, null)) return nullptr;
  if (std::regex_match(text, yes)) return true;
  if (std::regex_match(text, no)) return false;
  if (std::regex_match(text, integer)) return std::stoll(text);
  if (std::regex_match(text, octal)) return std::stoll(text.substr(2), nullptr, 8);
  if (std::regex_match(text, hexadecimal)) return std::stoll(text.substr(2), nullptr, 16);
  if (std::regex_match(text, real)) return std::strtod(text.c_str(), nullptr);
  return text;
}

class Reader {
 public:
  // With the names of a field, reading ends at its line.
  explicit Reader(const std::string& text, const Names* sought = nullptr) : sought_(sought) {
    if (yaml_parser_initialize(&parser_) != 1) throw std::bad_alloc();
    yaml_parser_set_encoding(&parser_, YAML_UTF8_ENCODING);
    yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(text.data()),
                                 text.size());
  }
  ~Reader() { yaml_parser_delete(&parser_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // Throws the mistake.
  Document Read() {
    Expect(YAML_STREAM_START_EVENT);
    const Event begin(&parser_);
    Check(begin);
    if (begin.Type() == YAML_STREAM_END_EVENT) Refuse(0, "there is no document");
    Document document = Node(0, 0);
    Expect(YAML_DOCUMENT_END_EVENT);
    const Event end(&parser_);
    Check(end);
    if (end.Type() != YAML_STREAM_END_EVENT) Refuse(end.Line(), "one document is all there may be");
    return document;
  }

  [[nodiscard]] std::size_t FoundLine() const { return foundLine_; }

 private:
  [[noreturn]] static void Refuse(std::size_t line, const std::string& sentence) {
    throw Mistake{line, sentence};
  }

  void Check(const Event& event) const {
    if (event.IsGood()) return;
    const bool marked = parser_.error != YAML_MEMORY_ERROR && parser_.error != YAML_READER_ERROR;
    Refuse(marked ? parser_.problem_mark.line + 1 : 0,
           std::string("this is no YAML: ") +
               (parser_.problem != nullptr ? parser_.problem : "it cannot be read"));
  }

  void Expect(yaml_event_type_t type) {
    const Event event(&parser_);
    Check(event);
    if (event.Type() != type) Refuse(event.Line(), "a value belongs here");
  }

  void Count(std::size_t line, std::size_t values) {
    values_ += values;
    if (values_ > kMostValues) Refuse(line, "the document has too many values");
  }

  // How many of the names sought the way to this node has, when it has no others.
  Document Node(int depth, std::size_t found) {
    const Event event(&parser_);
    Check(event);
    return Node(event, depth, found);
  }

  Document Node(const Event& event, int depth, std::size_t found) {
    if (depth > kDeepest) Refuse(event.Line(), "the document is nested too deeply");
    Count(event.Line(), 1);
    std::string anchor;
    Document node;
    switch (event.Type()) {
      case YAML_ALIAS_EVENT:
        return Repeated(event);
      case YAML_SCALAR_EVENT:
        anchor = TextOf(event.Raw().data.scalar.anchor);
        node = Scalar(event);
        break;
      case YAML_SEQUENCE_START_EVENT:
        anchor = TextOf(event.Raw().data.sequence_start.anchor);
        RefuseTag(event, event.Raw().data.sequence_start.tag);
        node = Sequence(depth);
        break;
      case YAML_MAPPING_START_EVENT:
        anchor = TextOf(event.Raw().data.mapping_start.anchor);
        RefuseTag(event, event.Raw().data.mapping_start.tag);
        node = Mapping(depth, found);
        break;
      default:
        Refuse(event.Line(), "a value belongs here");
    }
    if (!anchor.empty()) Remember(anchor, node);
    return node;
  }

  static void RefuseTag(const Event& event, const yaml_char_t* tag) {
    if (tag != nullptr)
      Refuse(event.Line(), "a value of the type " + TextOf(tag) + " is not taken");
  }

  static Document Scalar(const Event& event) {
    const auto& scalar = event.Raw().data.scalar;
    std::string text(reinterpret_cast<const char*>(scalar.value), scalar.length);
    const std::string tag = TextOf(scalar.tag);
    if (!tag.empty() && tag != kTextTag && tag != "!") RefuseTag(event, scalar.tag);
    if (scalar.style != YAML_PLAIN_SCALAR_STYLE || !tag.empty()) return text;
    return Resolved(text);
  }

  Document Sequence(int depth) {
    Document list = Document::array();
    for (;;) {
      const Event event(&parser_);
      Check(event);
      if (event.Type() == YAML_SEQUENCE_END_EVENT) return list;
      list.push_back(Node(event, depth + 1, kElsewhere));
    }
  }

  Document Mapping(int depth, std::size_t found) {
    Document object = Document::object();
    for (;;) {
      const Event event(&parser_);
      Check(event);
      if (event.Type() == YAML_MAPPING_END_EVENT) return object;
      if (event.Type() != YAML_SCALAR_EVENT) Refuse(event.Line(), "a name belongs here");
      const auto& scalar = event.Raw().data.scalar;
      const std::string name(reinterpret_cast<const char*>(scalar.value), scalar.length);
      if (object.contains(name)) Refuse(event.Line(), "'" + name + "' stands here twice");
      const bool leads = sought_ != nullptr && found < sought_->size() && (*sought_)[found] == name;
      if (leads) foundLine_ = event.Line();
      object[name] = Node(depth + 1, leads ? found + 1 : kElsewhere);
    }
  }

  struct Anchored {
    Document node;
    std::size_t values = 0;
  };

  // Texts count by their length: a long one repeated is as large as many values.
  static std::size_t ValuesIn(const Document& node) {
    constexpr std::size_t kCharacters = 16;
    if (node.is_string()) return 1 + node.get_ref<const std::string&>().size() / kCharacters;
    std::size_t values = 1;
    if (!node.is_structured()) return values;
    for (const auto& [name, inner] : node.items())
      values += ValuesIn(inner) + name.size() / kCharacters;
    return values;
  }

  void Remember(const std::string& anchor, const Document& node) {
    const std::size_t values = ValuesIn(node);
    Count(0, values);  // the copy that is kept
    anchors_[anchor] = {node, values};
  }

  Document Repeated(const Event& event) {
    const auto found = anchors_.find(TextOf(event.Raw().data.alias.anchor));
    if (found == anchors_.end()) Refuse(event.Line(), "nothing has this anchor");
    Count(event.Line(), found->second.values);
    return found->second.node;
  }

  static constexpr std::size_t kElsewhere = static_cast<std::size_t>(-1);

  yaml_parser_t parser_{};
  const Names* sought_;
  std::size_t foundLine_ = 0;
  std::size_t values_ = 0;
  std::map<std::string, Anchored> anchors_;
};

Names NamesOf(const std::string& pointer) {
  Names names;
  for (auto rest = Document::json_pointer(pointer); !rest.empty(); rest.pop_back())
    names.insert(names.begin(), rest.back());
  return names;
}

}  // namespace

std::optional<Document> ReadYaml(const std::string& text, Mistake* mistake) {
  try {
    return Reader(text).Read();
  } catch (const Mistake& found) {
    *mistake = found;
    return std::nullopt;
  }
}

std::size_t LineOf(const std::string& text, const std::string& pointer) {
  const Names names = NamesOf(pointer);
  Reader reader(text, &names);
  try {
    static_cast<void>(reader.Read());
  } catch (const Mistake& found) {
    return found.line;
  }
  return reader.FoundLine();
}

}  // namespace tool
