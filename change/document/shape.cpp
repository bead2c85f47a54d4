// SPDX-License-Identifier: Apache-2.0
// The builders of shapes, the way through them, and the fitness of texts.
#include "document/shape.h"

#include <algorithm>
#include <arpa/inet.h>

#include <zarnnetsdk/addr.h>

namespace change {
namespace {

Shape Of(Shape::Kind kind, std::string description) {
  Shape shape;
  shape.kind = kind;
  shape.description = std::move(description);
  return shape;
}

bool IsPlain(const std::string& text) {
  return std::none_of(text.begin(), text.end(),
                      [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

bool IsIfname(const std::string& text) {
  constexpr std::size_t kLongest = 15;
  const bool fit = std::all_of(text.begin(), text.end(), [](unsigned char c) {
    return c > 0x20 && c < 0x7F && c != '/' && c != '%' && c != ':';
  });
  return fit && !text.empty() && text.size() <= kLongest && text[0] != '-' && text[0] != '.';
}

bool IsHostname(const std::string& text) {
  constexpr std::size_t kLongest = 63;
  const bool fit = std::all_of(text.begin(), text.end(), [](unsigned char c) {
    return c < 0x7F && (std::isalnum(c) != 0 || c == '-' || c == '_');
  });
  return fit && !text.empty() && text.size() <= kLongest && text[0] != '-';
}

bool IsIpv4(const std::string& text) {
  in_addr address{};
  return ::inet_pton(AF_INET, text.c_str(), &address) == 1;
}

bool IsIpv6(const std::string& text) {
  in6_addr address{};
  return ::inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

bool IsDigits(const std::string& text) {
  constexpr std::size_t kLongest = 9;
  return !text.empty() && text.size() <= kLongest &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

Shape Shape::Both() const {
  Shape shape = *this;
  shape.seen = Seen::kBoth;
  return shape;
}
Shape Shape::Kernel() const {
  Shape shape = *this;
  shape.seen = Seen::kKernel;
  return shape;
}
Shape Shape::ReadOnly() const {
  Shape shape = Kernel();
  shape.readOnly = true;
  return shape;
}
Shape Shape::Secret() const {
  Shape shape = *this;
  shape.secret = true;
  return shape;
}
Shape Shape::Unordered() const {
  Shape shape = *this;
  shape.unordered = true;
  return shape;
}

Shape Object(std::string description, std::vector<Field> fields) {
  Shape shape = Of(Shape::Kind::kObject, std::move(description));
  shape.fields = std::move(fields);
  return shape;
}

Shape Map(Format names, std::string description, Shape value) {
  Shape shape = Of(Shape::Kind::kMap, std::move(description));
  shape.format = names;
  shape.element = {std::move(value)};
  return shape;
}

Shape List(std::string description, Shape element) {
  Shape shape = Of(Shape::Kind::kList, std::move(description));
  shape.element = {std::move(element)};
  return shape;
}

Shape Text(std::string description, Format format, long longest) {
  Shape shape = Of(Shape::Kind::kText, std::move(description));
  shape.format = format;
  shape.most = longest;
  return shape;
}

Shape Word(std::string description, std::vector<std::string> words) {
  Shape shape = Of(Shape::Kind::kWord, std::move(description));
  shape.words = std::move(words);
  return shape;
}

Shape Number(std::string description, long least, long most) {
  Shape shape = Of(Shape::Kind::kNumber, std::move(description));
  shape.least = least;
  shape.most = most;
  return shape;
}

Shape Flag(std::string description) {
  return Of(Shape::Kind::kFlag, std::move(description));
}

Shape AnyOf(std::string description, std::vector<Shape> alternatives) {
  Shape shape = Of(Shape::Kind::kAnyOf, std::move(description));
  shape.element = std::move(alternatives);
  return shape;
}

const Shape* ShapeAt(const Shape& shape, const Path& path) {
  if (path.empty()) return &shape;
  Path parent = path;
  const std::string name = parent.back();
  parent.pop_back();
  const Shape* const outer = ShapeAt(shape, parent);
  if (outer == nullptr) return nullptr;
  if (outer->kind == Shape::Kind::kMap) return &outer->element.front();
  for (const auto& [field, inner] : outer->fields) {
    if (field == name) return &inner;
  }
  return nullptr;
}

bool Fits(const std::string& text, Format format) {
  switch (format) {
    case Format::kAny:
      return IsPlain(text);
    case Format::kIfname:
      return IsIfname(text);
    case Format::kHostname:
      return IsHostname(text);
    case Format::kIpv4:
    case Format::kIpv4Mask:
      return IsIpv4(text);
    case Format::kIpv6:
      return IsIpv6(text);
    case Format::kAddress:
      return IsIpv4(text) || IsIpv6(text);
    case Format::kNumber:
      return IsDigits(text);
  }
  return false;
}

}  // namespace change
