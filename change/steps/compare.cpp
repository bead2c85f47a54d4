// SPDX-License-Identifier: Apache-2.0
// A field counts as wished when every place that can show it shows it: the files, the kernel, or
// both.
#include "steps/compare.h"

#include <algorithm>

#include "texts.h"

namespace change {
namespace {

bool AreAlike(const Json& a, const Json& b, const Shape& shape) {
  if (!shape.unordered || !a.is_array() || !b.is_array()) return a == b;
  Json left = a;
  Json right = b;
  std::sort(left.begin(), left.end());
  std::sort(right.begin(), right.end());
  return left == right;
}

// "No such thing" and "an empty list of them" are one.
Json Bare(const Json& value) {
  return value.is_array() && value.empty() ? Json() : value;
}

struct Documents {
  const Json& wanted;
  const Json& configured;
  const Json& live;
};

void CompareField(const Path& path, const Shape& shape, const Documents& documents,
                  std::vector<Difference>* differences) {
  const Json wanted = Bare(At(documents.wanted, path));
  const Json files = Bare(At(documents.configured, path));
  const Json kernel = Bare(At(documents.live, path));
  Difference difference{path, wanted, {}, {}};
  bool same = true;
  if (shape.seen != Shape::Seen::kKernel) {
    difference.files = files;
    same = AreAlike(wanted, files, shape);
  }
  if (shape.seen != Shape::Seen::kFiles) {
    difference.kernel = kernel;
    same = same && AreAlike(wanted, kernel, shape);
  }
  if (!same) differences->push_back(std::move(difference));
}

// Of what is made, has its fields compared, or goes as a whole: is there anything of it left?
void CompareRemoved(const Path& path, const Documents& documents,
                    std::vector<Difference>* differences) {
  const Json& files = At(documents.configured, path);
  const Json& kernel = At(documents.live, path);
  if (files.is_null() && kernel.is_null()) return;
  differences->push_back({path, nullptr, files, kernel});
}

void Walk(const Json& wish, const Path& path, const Shape& shape, const Documents& documents,
          std::vector<Difference>* differences) {
  const bool outer = shape.kind == Shape::Kind::kObject || shape.kind == Shape::Kind::kMap;
  if (!outer) return CompareField(path, shape, documents, differences);
  if (!wish.is_object()) {
    if (At(documents.wanted, path).is_null()) CompareRemoved(path, documents, differences);
    return;
  }
  for (const auto& [name, inner] : wish.items()) {
    const Path below = path / name;
    if (const Shape* const field = ShapeAt(shape, Path() / name))
      Walk(inner, below, *field, documents, differences);
  }
}

Json Shown(const Json& value, const Shape* shape) {
  return shape != nullptr && shape->secret && !value.is_null() ? Json("(secret)") : value;
}

void AddValues(const Json& value, const Path& path, const Shape& shape,
               std::vector<std::string>* values) {
  if (!value.is_object()) {
    values->push_back(Json(path.back()).dump() + ": " + Shown(value, ShapeAt(shape, path)).dump());
    return;
  }
  for (const auto& [name, inner] : value.items())
    AddValues(inner, path / name, shape, values);
}

}  // namespace

std::string ValuesAt(const Path& path, const std::vector<Difference>& differences,
                     const Shape& shape) {
  std::vector<std::string> values;
  for (const Difference& difference : differences) {
    if (Meet(path, difference.path)) AddValues(difference.wanted, difference.path, shape, &values);
  }
  return Joined(values, ", ");
}

std::vector<Difference> DifferencesOf(const Json& wish, const Json& wanted, const Json& configured,
                                      const Json& live, const Shape& shape) {
  std::vector<Difference> differences;
  Json fields = wish;
  fields.erase("version");
  Walk(fields, Path(), shape, {wanted, configured, live}, &differences);
  return differences;
}

Json ToJson(const std::vector<Difference>& differences, const Shape& shape) {
  Json list = Json::array();
  for (const Difference& difference : differences) {
    const Shape* const field = ShapeAt(shape, difference.path);
    // What a whole removed thing was is not told field by field.
    const bool whole = field != nullptr && field->element.empty() && !field->fields.empty();
    const auto shown = [&](const Json& value) {
      return whole && value.is_object() ? Json("there") : Shown(value, field);
    };
    Json row{{"path", difference.path.to_string()}, {"wanted", shown(difference.wanted)}};
    if (difference.files) row["files"] = shown(*difference.files);
    if (difference.kernel) row["kernel"] = shown(*difference.kernel);
    list.push_back(std::move(row));
  }
  return list;
}

}  // namespace change
