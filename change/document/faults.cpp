// SPDX-License-Identifier: Apache-2.0
// What is wrong with a document, each with its path.
#include <algorithm>

#include "document/shape.h"
#include "texts.h"
#include "words/nearest.h"

namespace change {
namespace {

using Faults = std::vector<Fault>;

const char* NameOf(Format format) {
  switch (format) {
    case Format::kIfname:
      return "the name of an interface (1 to 15 characters, no blank, none of '/%:')";
    case Format::kHostname:
      return "a host name (1 to 63 letters, digits, '-' and '_')";
    case Format::kIpv4:
      return "an IPv4 address";
    case Format::kIpv4Mask:
      return "a netmask";
    case Format::kIpv6:
      return "an IPv6 address";
    case Format::kAddress:
      return "an IPv4 or IPv6 address";
    case Format::kNumber:
      return "a number in decimal digits";
    case Format::kAny:
      break;
  }
  return "a text without control characters";
}

std::string Listed(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words)
    text += (text.empty() ? "" : ", ") + word;
  return text;
}

void Check(const Json& value, const Shape& shape, const Path& path, Faults* faults);

void CheckObject(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  if (!value.is_object()) return faults->push_back({path, "an object belongs here"});
  std::vector<std::string> known;
  for (const auto& [name, inner] : shape.fields)
    known.push_back(name);
  for (const auto& [name, inner] : value.items()) {
    const auto field = std::find_if(shape.fields.begin(), shape.fields.end(),
                                    [&name = name](const auto& row) { return row.name == name; });
    if (field != shape.fields.end()) {
      Check(inner, field->shape, path / name, faults);
    } else {
      const std::string near = words::DidYouMean(name, known);
      faults->push_back({path / name, "there is no field '" + name + "' here" +
                                          (near.empty() ? "; there are " + Listed(known) : near)});
    }
  }
}

void CheckMap(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  if (!value.is_object()) return faults->push_back({path, "an object belongs here"});
  for (const auto& [name, inner] : value.items()) {
    if (!Fits(name, shape.format))
      faults->push_back({path / name, "'" + name + "' is not " + NameOf(shape.format)});
    Check(inner, shape.element.front(), path / name, faults);
  }
}

void CheckList(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  constexpr std::size_t kLongest = 1024;
  if (!value.is_array()) return faults->push_back({path, "a list belongs here"});
  if (value.size() > kLongest) return faults->push_back({path, "the list is too long"});
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i].is_null()) faults->push_back({path / i, "null does not belong in a list"});
    Check(value[i], shape.element.front(), path / i, faults);
  }
}

void CheckText(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  if (!value.is_string())
    return faults->push_back({path, std::string(NameOf(shape.format)) + " belongs here, as text"});
  const std::string text = TextOf(value);
  const std::string shown = shape.secret ? "the secret" : "'" + text + "'";
  if (!Fits(text, shape.format))
    return faults->push_back({path, shown + " is not " + NameOf(shape.format)});
  if (static_cast<long>(text.size()) > shape.most) {
    faults->push_back(
        {path, shown + " is longer than " + std::to_string(shape.most) + " characters"});
  }
}

void CheckWord(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  const auto& words = shape.words;
  const std::string word = TextOf(value);
  if (value.is_string() && Has(words, word)) return;
  const std::string near = words::DidYouMean(word, words);
  faults->push_back(
      {path, (value.is_string() ? "'" + word + "' is none of " : "one of these belongs here: ") +
                 Listed(words) + near});
}

void CheckNumber(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  const std::string range = std::to_string(shape.least) + " to " + std::to_string(shape.most);
  if (!value.is_number_integer())
    return faults->push_back({path, "a whole number from " + range + " belongs here"});
  // An unsigned number that a long does not hold would come back as a negative one.
  const bool huge = value.is_number_unsigned() &&
                    value.get<unsigned long>() > static_cast<unsigned long>(shape.most);
  if (huge || value.get<long>() < shape.least || value.get<long>() > shape.most)
    faults->push_back({path, value.dump() + " is not a number from " + range});
}

void CheckAlternatives(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  Faults last;
  for (const Shape& alternative : shape.element) {
    last.clear();
    Check(value, alternative, path, &last);
    if (last.empty()) return;
  }
  faults->push_back({path, "this does not belong here: " + shape.description});
}

void Check(const Json& value, const Shape& shape, const Path& path, Faults* faults) {
  if (shape.readOnly)
    return faults->push_back({path, "this can only be read: " + shape.description});
  if (value.is_null()) return;
  switch (shape.kind) {
    case Shape::Kind::kObject:
      return CheckObject(value, shape, path, faults);
    case Shape::Kind::kMap:
      return CheckMap(value, shape, path, faults);
    case Shape::Kind::kList:
      return CheckList(value, shape, path, faults);
    case Shape::Kind::kText:
      return CheckText(value, shape, path, faults);
    case Shape::Kind::kWord:
      return CheckWord(value, shape, path, faults);
    case Shape::Kind::kNumber:
      return CheckNumber(value, shape, path, faults);
    case Shape::Kind::kAnyOf:
      return CheckAlternatives(value, shape, path, faults);
    case Shape::Kind::kFlag:
      if (!value.is_boolean()) faults->push_back({path, "true or false belongs here"});
  }
}

}  // namespace

std::vector<Fault> FaultsOf(const Json& document, const Shape& shape) {
  Faults faults;
  Check(document, shape, Path(), &faults);
  return faults;
}

}  // namespace change
