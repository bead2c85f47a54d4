// SPDX-License-Identifier: Apache-2.0
// zarnnetctl apply: the state of the networking as one document.
#include "change_call.h"
#include "commands.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

struct Asked {
  std::string file;
  std::string plan;
  std::string options = "{}";
};

Json ObjectIn(const std::string& text, const std::string& where) {
  Json json = Json::parse(text, nullptr, false);
  if (!json.is_object()) throw WrongUsage(where, "a JSON object belongs here");
  return json;
}

// A plan shows no secrets, so that it cannot be the wish of a change that has one.
std::string WishOf(const Json& plan) {
  std::string wish = plan.value("wish", Json::object()).dump();
  if (wish.find("\"(secret)\"") != std::string::npos)
    throw WrongUsage("--plan", "the wish has secrets, which no plan has: name its FILE too");
  return wish;
}

void Apply(const Asked& asked, Context* context) {
  Json options = OptionsOf(*context);
  options.update(ObjectIn(asked.options, "--options"));
  if (asked.plan.empty()) {
    if (asked.file.empty()) throw WrongUsage("FILE", "name the document, or a plan with --plan");
    return ApplyWish(*context, TextOfWish(ReadWish(asked.file)), options);
  }
  const Json plan = ObjectIn(ReadText(asked.plan), asked.plan);
  if (plan.contains("undoes"))
    throw WrongUsage("--plan",
                     "it is one of an undo: zarnnetctl undo " + WrittenOut(plan["undoes"]));
  options.update(plan.value("options", Json::object()));
  options["plan"] = plan;
  ApplyWish(*context, asked.file.empty() ? WishOf(plan) : TextOfWish(ReadWish(asked.file)),
            options);
}

void Plan(const std::string& file, Context* context) {
  context->change.plan = true;
  ApplyWish(*context, TextOfWish(ReadWish(file)), OptionsOf(*context));
}

}  // namespace

void AddChangeCommands(const Group& app, Context& context) {
  const Verb apply =
      AddChange(app, context, "apply", "Makes the machine as a document says",
                "  zarnnetctl apply wish.yaml\n  zarnnetctl show --json | zarnnetctl apply -\n"
                "  zarnnetctl plan wish.json --json >plan.json\n"
                "  zarnnetctl apply --plan plan.json",
                Planning::kNone);
  auto asked = std::make_shared<Asked>();
  apply.AddOption("FILE", asked->file, "The wish as JSON or YAML; - is standard input").File();
  apply.AddOption("--plan", asked->plan, "A plan as JSON: exactly that, unless the machine changed")
      .File();
  apply.AddOption("--options", asked->options, "Options of the change, as JSON");
  apply.Run([asked, &context] { Apply(*asked, &context); });
  const Verb plan = AddChange(app, context, "plan", "Shows exactly what a document would change",
                              "  zarnnetctl plan wish.json", Planning::kNone);
  plan.AddOption("FILE", asked->file, "The wish as JSON or YAML; - is standard input")
      .Required()
      .File();
  plan.Run([asked, &context] { Plan(asked->file, &context); });
}

}  // namespace tool
