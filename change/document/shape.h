// SPDX-License-Identifier: Apache-2.0
// What the fields of the state document are: one description that refuses what cannot be meant,
// writes the JSON Schema, and says where the truth about a field is found.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "json.h"

namespace change {

// Texts that have a form of their own.
enum class Format {
  kAny,  // no control characters
  kIfname,
  kHostname,
  kIpv4,
  kIpv4Mask,
  kIpv6,
  kAddress,  // of either family
  kNumber,   // decimal digits, as the name of something numbered
};

struct Field;

struct Shape {
  enum class Kind { kObject, kMap, kList, kText, kWord, kNumber, kFlag, kAnyOf };
  // Where a field is to be found after a change: in files, in the kernel (or what runs), or both.
  enum class Seen { kFiles, kBoth, kKernel };

  Kind kind = Kind::kObject;
  std::string description;
  std::vector<Field> fields;   // of an object
  std::vector<Shape> element;  // of a map's values, of a list; alternatives
  std::vector<std::string> words;
  Format format = Format::kAny;  // of a text; of the names of a map
  long least = 0;
  long most = 0;  // of a number; of a text, its longest
  Seen seen = Seen::kFiles;
  bool readOnly = false;
  bool secret = false;
  bool unordered = false;  // a list whose order means nothing

  [[nodiscard]] Shape Both() const;
  [[nodiscard]] Shape Kernel() const;
  [[nodiscard]] Shape ReadOnly() const;
  [[nodiscard]] Shape Secret() const;
  [[nodiscard]] Shape Unordered() const;
};

struct Field {
  std::string name;
  Shape shape;
};

Shape Object(std::string description, std::vector<Field> fields);
Shape Map(Format names, std::string description, Shape value);
Shape List(std::string description, Shape element);
Shape Text(std::string description, Format format = Format::kAny, long longest = 255);
Shape Word(std::string description, std::vector<std::string> words);
Shape Number(std::string description, long least, long most);
Shape Flag(std::string description);
Shape AnyOf(std::string description, std::vector<Shape> alternatives);

// What is wrong with a document of this shape: a path and a sentence.
struct Fault {
  Path path;
  std::string sentence;
};
// Null stands for any value in a wish. A field that is only read is refused in it.
std::vector<Fault> FaultsOf(const Json& document, const Shape& shape);

// The shape of what is at the path; null for none.
const Shape* ShapeAt(const Shape& shape, const Path& path);

bool Fits(const std::string& text, Format format);

// As JSON Schema, without the heading of a whole schema.
Json SchemaOf(const Shape& shape);

}  // namespace change
