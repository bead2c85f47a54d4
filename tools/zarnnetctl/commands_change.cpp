// SPDX-License-Identifier: Apache-2.0
// zarnnetctl apply and show: the state of the networking as one document.
#include <iostream>
#include <nlohmann/json.hpp>

#include "change_call.h"
#include "commands.h"

namespace tool {
namespace {

struct Asked {
  std::string file;
  std::string options = "{}";
  std::string view = "configured";
  bool yaml = false;
};

void Apply(const Asked& asked, Context* context) {
  const Json options = Json::parse(asked.options, nullptr, false);
  if (options.is_discarded()) throw WrongUsage("--options", "'" + asked.options + "' is no JSON");
  const Answered answered = ApplyWish(ReadWish(asked.file), options);
  std::cout << answered.report.dump(2) << '\n';
  context->status = answered.result;  // the exit status is the result of the library of changes
}

void Show(const Asked& asked) {
  const Json state = ReadMachine({{"view", asked.view}});
  if (asked.yaml)
    std::cout << WrittenAsYaml(state, StateSchema());
  else
    std::cout << state.dump(2) << '\n';
}

}  // namespace

void AddChangeCommands(const Group& app, Context& context) {
  const Verb apply =
      AddVerb(app, context, "apply", "Makes the machine as a document says",
              "  zarnnetctl apply wish.yaml\n  zarnnetctl show --json | zarnnetctl apply -");
  auto asked = std::make_shared<Asked>();
  apply.AddOption("FILE", asked->file, "The wish as JSON or YAML; - is standard input")
      .Required()
      .File();
  apply.AddOption("--options", asked->options, "Options of the change, as JSON");
  apply.Run([asked, &context] { Apply(*asked, &context); });
  const Verb show = AddVerb(app, context, "show", "Shows the state as a document",
                            "  zarnnetctl show --view live");
  show.AddOption("--view", asked->view, "configured, live or both")
      .OneOf({"configured", "live", "both"});
  show.AddFlag("--yaml", asked->yaml, "As YAML, with what each field is");
  show.Run([asked] { Show(*asked); });
}

}  // namespace tool
