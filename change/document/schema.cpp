// SPDX-License-Identifier: Apache-2.0
// Shapes as JSON Schema.
#include "document/shape.h"

namespace change {
namespace {

Json TextSchema(Format format) {
  switch (format) {
    case Format::kIfname:
      return {{"type", "string"}, {"pattern", "^[^-./%: \\t\\n][^/%: \\t\\n]{0,14}$"}};
    case Format::kHostname:
      return {{"type", "string"}, {"pattern", "^[A-Za-z0-9_][A-Za-z0-9_-]{0,62}$"}};
    case Format::kIpv4:
    case Format::kIpv4Mask:
      return {{"type", "string"}, {"format", "ipv4"}};
    case Format::kIpv6:
      return {{"type", "string"}, {"format", "ipv6"}};
    case Format::kAddress:
      return {{"type", "string"}, {"anyOf", {{{"format", "ipv4"}}, {{"format", "ipv6"}}}}};
    case Format::kNumber:
      return {{"type", "string"}, {"pattern", "^[0-9]{1,9}$"}};
    case Format::kAny:
      break;
  }
  return {{"type", "string"}, {"pattern", "^[^\\u0000-\\u001f\\u007f]*$"}};
}

Json ObjectSchema(const Shape& shape) {
  Json properties = Json::object();
  for (const auto& [name, field] : shape.fields)
    properties[name] = SchemaOf(field);
  return {{"type", "object"}, {"properties", properties}, {"additionalProperties", false}};
}

Json ElementsSchema(const Shape& shape) {
  Json alternatives = Json::array();
  for (const Shape& alternative : shape.element)
    alternatives.push_back(SchemaOf(alternative));
  return {{"anyOf", alternatives}};
}

Json BareSchema(const Shape& shape) {
  switch (shape.kind) {
    case Shape::Kind::kObject:
      return ObjectSchema(shape);
    case Shape::Kind::kMap:
      return {{"type", "object"},
              {"propertyNames", TextSchema(shape.format)},
              {"additionalProperties", SchemaOf(shape.element.front())}};
    case Shape::Kind::kList:
      return {{"type", "array"}, {"items", SchemaOf(shape.element.front())}};
    case Shape::Kind::kText: {
      Json schema = TextSchema(shape.format);
      schema["maxLength"] = shape.most;
      return schema;
    }
    case Shape::Kind::kWord:
      return {{"enum", shape.words}};
    case Shape::Kind::kNumber:
      return {{"type", "integer"}, {"minimum", shape.least}, {"maximum", shape.most}};
    case Shape::Kind::kFlag:
      return {{"type", "boolean"}};
    case Shape::Kind::kAnyOf:
      return ElementsSchema(shape);
  }
  return Json::object();
}

}  // namespace

Json SchemaOf(const Shape& shape) {
  Json schema = BareSchema(shape);
  schema["description"] = shape.description;
  if (shape.readOnly) schema["readOnly"] = true;
  if (shape.secret) schema["writeOnly"] = true;
  return schema;
}

}  // namespace change
