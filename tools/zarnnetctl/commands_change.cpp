// SPDX-License-Identifier: Apache-2.0
// zarnnetctl apply: the state of the networking as one document.
#include <fstream>
#include <iostream>
#include <iterator>
#include <zarnnetchange/change.h>

#include "commands.h"
#include "output.h"
#include "query.h"
#include "waiting.h"

namespace tool {
namespace {

std::string ReadText(const std::string& path) {
  if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
  std::ifstream file(path);
  if (!file) throw Failure("cannot read " + path, ZARNNETERR_OPEN, ReasonOf(ZARNNETERR_OPEN));
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Asked {
  std::string file;
  std::string options = "{}";
  std::optional<int> confirm;
};

// The exit status is the result of the library of changes.
void Print(const Report& report, int result, Context* context) {
  std::cout << report.Text() << '\n';
  context->status = result;
}

// What is no object of options is left as it is, for the library to refuse.
std::string OptionsOf(const Asked& asked) {
  Json options = Json::parse(asked.options, nullptr, false);
  if (!options.is_object()) return asked.options;
  if (!options.contains("program")) options["program"] = "zarnnetctl";
  if (asked.confirm) options["confirm"] = *asked.confirm;
  return options.dump();
}

void Apply(const Asked& asked, Context* context) {
  Report report;
  const int result = ZARNNetChangeApply(ReadText(asked.file).c_str(), OptionsOf(asked).c_str(),
                                        nullptr, nullptr, report.Out());
  Print(report, result, context);
  AskToConfirm(report.AsJson(), context);
}

}  // namespace

void AddChangeCommands(const Group& app, Context& context) {
  const Verb apply = AddVerb(app, context, "apply", "Makes the machine as a document says",
                             "  zarnnetctl apply wish.json");
  auto asked = std::make_shared<Asked>();
  apply.AddOption("FILE", asked->file, "The wish as JSON; - is standard input").Required().File();
  apply.AddOption("--options", asked->options, "Options of the change, as JSON");
  apply
      .AddOption("--confirm", asked->confirm,
                 "Seconds to confirm it, 0 for those of the settings; else it goes back")
      .Within(0, 86400);
  apply.Run([asked, &context] { Apply(*asked, &context); });
}

}  // namespace tool
