// SPDX-License-Identifier: Apache-2.0
// zarnnetctl diff: what a document would change, and where files and kernel disagree.
#include <iostream>
#include <nlohmann/json.hpp>

#include "change_call.h"
#include "commands.h"

namespace tool {
namespace {

struct Asked {
  std::string file;
  bool drift = false;
};

std::string Cell(const Json& row, const char* side) {
  if (!row.contains(side)) return {};
  const Json& value = row[side];
  if (value.is_null()) return "nothing";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

// ---- drift

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

Json Drift() {
  const Json state = ReadMachine({{"view", "both"}});
  Json rows = Json::array();
  AddStored(state["configured"], &rows);
  AddUnstored(state["configured"], state["live"], &rows);
  return rows;
}

void ShowDrift(Context* context) {
  const Json rows = Drift();
  context->status = rows.empty() ? ZARNNETCHANGE_DONE : ZARNNETCHANGE_OTHERWISE;
  if (context->json) return PrintJson("drift", rows);
  if (rows.empty()) {
    std::cout << "files and kernel agree\n";
    return;
  }
  std::vector<Row> table{Headings({"PATH", "FILES", "KERNEL", "SETTLED BY: zarnnetctl apply -"})};
  for (const Json& row : rows) {
    table.push_back({{row["path"], Tone::kBad},
                     {Cell(row, "files")},
                     {Cell(row, "kernel")},
                     {row["settled_by"].dump()}});
  }
  PrintTable(table);
}

// ---- a document

void PrintFindings(const Json& report) {
  std::cerr << "zarnnetctl: " << report.value("reason", "out of memory") << '\n';
}

void ShowDifferences(const std::string& file, Context* context) {
  const Answered answered = CompareWish(ReadWish(file));
  context->status = answered.result;
  if (context->json) return PrintJson("diff", answered.report);
  if (answered.result == ZARNNETCHANGE_DONE) {
    std::cout << answered.report.value("reason", "") << '\n';
    return;
  }
  if (answered.result != ZARNNETCHANGE_OTHERWISE) return PrintFindings(answered.report);
  std::vector<Row> table{Headings({"PATH", "WANTED", "FILES", "KERNEL"})};
  for (const Json& row : answered.report["differences"]) {
    table.push_back({{row["path"], Tone::kBad},
                     {Cell(row, "wanted"), Tone::kGood},
                     {Cell(row, "files")},
                     {Cell(row, "kernel")}});
  }
  PrintTable(table);
}

}  // namespace

void AddDiffCommand(const Group& app, Context& context) {
  const Verb diff =
      AddVerb(app, context, "diff",
              "Shows what a document would change, or where files and kernel disagree",
              "  zarnnetctl diff wish.yaml\n  zarnnetctl diff --drift");
  auto asked = std::make_shared<Asked>();
  const Word file =
      diff.AddOption("FILE", asked->file, "The document as JSON or YAML; - is standard input")
          .File();
  diff.AddFlag("--drift", asked->drift, "Compare the files with the kernel").Excludes(file);
  diff.Run([asked, &context] {
    if (asked->drift) return ShowDrift(&context);
    if (asked->file.empty()) throw WrongUsage("give a FILE, or --drift");
    ShowDifferences(asked->file, &context);
  });
}

}  // namespace tool
