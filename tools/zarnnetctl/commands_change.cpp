// SPDX-License-Identifier: Apache-2.0
// zarnnetctl apply and show: the state of the networking as one document.
#include <fstream>
#include <iostream>
#include <iterator>
#include <zarnnetchange/change.h>

#include "commands.h"
#include "output.h"
#include "query.h"

namespace tool {
namespace {

// A text of the library of changes, freed at the end of its scope.
struct Text {
  char* text = nullptr;
  ~Text() { ZARNNetChangeFree(text); }
};

struct Asked {
  std::string file;
  std::string options = "{}";
  std::string view = "configured";
};

// The exit status is the result of the library of changes.
void Print(const Text& text, int result, Context* context) {
  std::cout << (text.text != nullptr ? text.text : "{}") << '\n';
  context->status = result;
}

void Apply(const Asked& asked, Context* context) {
  Text report;
  const int result = ZARNNetChangeApply(ReadText(asked.file).c_str(), asked.options.c_str(),
                                        nullptr, nullptr, &report.text);
  Print(report, result, context);
}

void Show(const Asked& asked, Context* context) {
  Text state;
  const Json options{{"view", asked.view}};
  const int result = ZARNNetChangeRead(options.dump().c_str(), &state.text);
  Print(state, result, context);
}

}  // namespace

std::string ReadText(const std::string& path) {
  if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
  std::ifstream file(path);
  if (!file) throw Failure("cannot read " + path, ZARNNETERR_OPEN, ReasonOf(ZARNNETERR_OPEN));
  return {std::istreambuf_iterator<char>(file), {}};
}

void AddChangeCommands(const Group& app, Context& context) {
  const Verb apply = AddVerb(app, context, "apply", "Makes the machine as a document says",
                             "  zarnnetctl apply wish.json");
  auto asked = std::make_shared<Asked>();
  apply.AddOption("FILE", asked->file, "The wish as JSON; - is standard input").Required().File();
  apply.AddOption("--options", asked->options, "Options of the change, as JSON");
  apply.Run([asked, &context] { Apply(*asked, &context); });
  const Verb show = AddVerb(app, context, "show", "Shows the state as a JSON document",
                            "  zarnnetctl show --view live");
  show.AddOption("--view", asked->view, "configured, live or both")
      .OneOf({"configured", "live", "both"});
  show.Run([asked, &context] { Show(*asked, &context); });
}

}  // namespace tool
