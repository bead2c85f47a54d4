// SPDX-License-Identifier: Apache-2.0
#include "drift.h"

#include <nlohmann/json.hpp>

#include "change_call.h"

namespace tool {
namespace {

// The wish of one field.
Document WishOf(const std::string& pointer, const Json& value) {
  Document wish = Document::object();
  wish[Document::json_pointer(pointer)] = Document::parse(value.dump());
  return wish;
}

Json DriftRow(const std::string& path, const Json& files, const Json& kernel,
              const Document& wish) {
  return {{"path", path}, {"files", files}, {"kernel", kernel}, {"settled_by", wish}};
}

// What is configured is a wish that the files fulfil: what differs from it, the kernel has.
void AddStored(const Json& configured, Json* rows) {
  const Answered answered = CompareWish(Document::parse(configured.dump()));
  const Json differences = answered.report.value("differences", Json::array());
  for (const Json& row : differences) {
    const std::string path = row["path"];
    const Json files = row.value("files", Json());
    const Json kernel = row.value("kernel", Json());
    if (files != kernel)
      rows->push_back(DriftRow(path, files, kernel, WishOf(path, row["wanted"])));
  }
}

// What there is and no file knows: it goes with the next start, unless it is stored.
void AddUnstored(const Json& configured, const Json& live, Json* rows) {
  for (const char* section : {"bonds", "bridges", "vlans"}) {
    const Json things = live.value(section, Json::object());
    const Json stored = configured.value(section, Json::object());
    for (const auto& [name, thing] : things.items()) {
      if (stored.contains(name)) continue;
      Json fields = thing;
      fields.erase("partner");
      const std::string path = std::string("/") + section + "/" + name;
      rows->push_back(DriftRow(path, nullptr, fields, WishOf(path, fields)));
    }
  }
  const auto gateway = Json::json_pointer("/routes/gateway");
  const bool leased = live.dump().find(R"("method":"dhcp")") != std::string::npos;
  if (live.contains(gateway) && !configured.contains(gateway) && !leased) {
    const std::string path = gateway.to_string();
    rows->push_back(DriftRow(path, nullptr, live[gateway], WishOf(path, live[gateway])));
  }
}

}  // namespace

Json DriftOf(const Json& state) {
  Json rows = Json::array();
  AddStored(state["configured"], &rows);
  AddUnstored(state["configured"], state["live"], &rows);
  return rows;
}

std::string Side(const Json& row, const char* side) {
  if (!row.contains(side)) return {};
  const Json& value = row[side];
  if (value.is_null()) return "nothing";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace tool
