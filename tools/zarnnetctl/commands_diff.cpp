// SPDX-License-Identifier: Apache-2.0
// zarnnetctl diff: what a document would change, and where files and kernel disagree.
#include <iostream>
#include <nlohmann/json.hpp>

#include "change_call.h"
#include "commands.h"
#include "drift.h"

namespace tool {
namespace {

struct Asked {
  std::string file;
  bool drift = false;
};

// ---- drift

void ShowDrift(Context* context) {
  const Json rows = DriftOf(ReadMachine({{"view", "both"}}));
  context->status = rows.empty() ? ZARNNETCHANGE_DONE : ZARNNETCHANGE_OTHERWISE;
  if (context->json) return PrintJson("drift", rows);
  if (rows.empty()) {
    std::cout << "files and kernel agree\n";
    return;
  }
  std::vector<Row> table{Headings({"PATH", "FILES", "KERNEL", "SETTLED BY: zarnnetctl apply -"})};
  for (const Json& row : rows) {
    table.push_back({{row["path"], Tone::kBad},
                     {Side(row, "files")},
                     {Side(row, "kernel")},
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
                     {Side(row, "wanted"), Tone::kGood},
                     {Side(row, "files")},
                     {Side(row, "kernel")}});
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
