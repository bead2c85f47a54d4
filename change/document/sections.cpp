// SPDX-License-Identifier: Apache-2.0
// The table of sections, and the document that they make.
#include "document/section.h"
#include "texts.h"

namespace change {
namespace {

bool IsAsked(const std::vector<std::string>& sections, const char* name) {
  return sections.empty() || Has(sections, name);
}

}  // namespace

const std::vector<Section>& Sections() {
  static const std::vector<Section> sections{kHost,       kInterfaces, kBonds,      kBridges,
                                             kVlans,      kDns,        kRoutes,     kTopology,
                                             kDhcpServer, kPppoe,      kPppoeRelay, kTunnel};
  return sections;
}

Shape DocumentShape() {
  std::vector<Field> fields{{"version", Number("Version of the document's form", 1, 1)}};
  for (const Section& section : Sections())
    fields.push_back({section.name, section.shape()});
  return Object("The networking of an appliance", std::move(fields));
}

Json ReadConfigured(const View& view, const std::vector<std::string>& sections) {
  Json document{{"version", 1}};
  for (const Section& section : Sections()) {
    if (IsAsked(sections, section.name)) Put(&document, section.name, section.configured(view));
  }
  return document;
}

Json ReadLive(const View& view, const Json& configured, const std::vector<std::string>& sections) {
  Json document{{"version", 1}};
  for (const Section& section : Sections()) {
    if (IsAsked(sections, section.name))
      Put(&document, section.name, section.live(view, Member(configured, section.name)));
  }
  return document;
}

void SpellOut(const Json& before, const Shape& shape, Json* wish) {
  if (wish->is_null() && shape.kind == Shape::Kind::kMap && before.is_object()) {
    *wish = Json::object();
    for (const auto& [name, thing] : before.items())
      (*wish)[name] = nullptr;
  }
  if (!wish->is_object()) return;
  for (auto& [name, inner] : wish->items()) {
    if (const Shape* const field = ShapeAt(shape, Path() / name))
      SpellOut(Member(before, name), *field, &inner);
  }
}

Json WholeSchema() {
  Json schema = SchemaOf(DocumentShape());
  schema["$schema"] = "https://json-schema.org/draft/2020-12/schema";
  schema["$id"] = "urn:zarnnet:state:1";
  schema["title"] = "State of the networking, version 1";
  return schema;
}

}  // namespace change
