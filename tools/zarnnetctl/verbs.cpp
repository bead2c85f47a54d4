// SPDX-License-Identifier: Apache-2.0
// What a command line may say, and the reading of it.
#include "verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>

#include "grammar.h"
#include "nearest.h"

namespace tool {

// ---- words

Word Word::Required() const {
  return Word(option_->required());
}

Word Word::OneOf(const std::vector<std::string>& values) const {
  const Check isOne = [values](const std::string& value) -> std::string {
    if (std::find(values.begin(), values.end(), value) != values.end()) return {};
    const std::string near = words::DidYouMean(value, values);
    return "'" + value + "' is none of " + CLI::detail::join(values, ", ") + near;
  };
  return Checked(isOne, "{" + CLI::detail::join(values, ",") + "}");
}

Word Word::Interface() const {
  return Word(option_->type_name(kInterfaceShape));
}

Word Word::File() const {
  return Word(option_->type_name(kFileShape));
}

Word Word::Within(int least, int most) const {
  return Word(option_->check(CLI::Range(least, most)));
}

Word Word::Within(double least, double most) const {
  return Word(option_->check(CLI::Range(least, most)));
}

Word Word::Checked(const Check& check, const std::string& shape) const {
  return Word(option_->check(check)->type_name(shape));
}

Word Word::Count(int least, int most) const {
  return Word(option_->expected(least, most));
}

Word Word::Needs(const Word& other) const {
  return Word(option_->needs(other.option_));
}

Word Word::Excludes(const Word& other) const {
  return Word(option_->excludes(other.option_));
}

// ---- verbs

template <class Value>
Word Verb::AddOption(const std::string& name, Value& value, const std::string& description) const {
  return Word(verb_->add_option(name, value, description));
}

using Texts = std::vector<std::string>;
template Word Verb::AddOption(const std::string&, std::string&, const std::string&) const;
template Word Verb::AddOption(const std::string&, Texts&, const std::string&) const;
template Word Verb::AddOption(const std::string&, int&, const std::string&) const;
template Word Verb::AddOption(const std::string&, unsigned&, const std::string&) const;
template Word Verb::AddOption(const std::string&, double&, const std::string&) const;
template Word Verb::AddOption(const std::string&, std::optional<std::string>&,
                              const std::string&) const;
template Word Verb::AddOption(const std::string&, std::optional<Texts>&, const std::string&) const;
template Word Verb::AddOption(const std::string&, std::optional<int>&, const std::string&) const;

Word Verb::AddFlag(const std::string& name, bool& value, const std::string& description) const {
  return Word(verb_->add_flag(name, value, description));
}

void Verb::Run(const std::function<void()>& action) const {
  verb_->callback(action);
}

Group AddGroup(const Group& group, const std::string& name, const std::string& description) {
  CLI::App* const added = group.app->add_subcommand(name, description);
  added->require_subcommand(1);
  return {added};
}

Verb AddVerb(const Group& group, Context& context, const std::string& name,
             const std::string& description, const std::string& examples) {
  CLI::App* const verb = group.app->add_subcommand(name, description);
  verb->add_flag("--json", context.json, "Print JSON, errors too");
  verb->footer("Examples:\n" + examples);
  return Verb(verb);
}

constexpr char kPlanWords[] = "Show exactly what would happen, and change nothing";

Verb AddAct(const Group& group, Context& context, const std::string& name,
            const std::string& description, const std::string& examples) {
  const Verb verb = AddVerb(group, context, name, description, examples);
  verb.AddFlag("--plan", context.change.plan, kPlanWords);
  return verb;
}

void AddAct(const Group& group, Context& context, const std::string& name,
            const std::string& description, const std::string& examples, void (*run)(Context&)) {
  AddAct(group, context, name, description, examples).Run([&context, run] { run(context); });
}

Verb AddChange(const Group& group, Context& context, const std::string& name,
               const std::string& description, const std::string& examples, Planning planning) {
  constexpr int kMostSeconds = 3600;
  constexpr int kMostConfirm = 86400;
  CLI::App* const verb = group.app->add_subcommand(name, description);
  ChangeOptions& change = context.change;
  verb->add_flag("--json", context.json, "Print the report as JSON");
  verb->option_defaults()->group(kChangeGroup);
  verb->add_flag("--force", change.force, "Do what a rule refuses and that can be insisted on");
  verb->add_flag("--keep", change.keep, "Keep what is stored, though it is not in effect");
  verb->add_option("--wait", change.wait, "Seconds to wait for another's change to end (5)")
      ->check(CLI::Range(0, kMostSeconds));
  verb->add_option("--confirm", change.confirm,
                   "Seconds in which to confirm it, 0 for those of the settings; else it goes back")
      ->check(CLI::Range(0, kMostConfirm));
  if (planning == Planning::kFlag) verb->add_flag("--plan", change.plan, kPlanWords);
  verb->add_flag("-q,--quiet", context.quiet, "Say nothing of what went well");
  verb->add_flag("-v,--verbose", context.verbose, "Show the steps, with their files and programs");
  verb->option_defaults()->group("Options");
  verb->footer("Examples:\n" + examples);
  return Verb(verb);
}

std::shared_ptr<std::string> AddOperand(const Verb& verb, const std::string& name,
                                        const std::string& description) {
  auto operand = std::make_shared<std::string>();
  verb.AddOption(name, *operand, description).Required();
  return operand;
}

std::shared_ptr<std::string> AddInterface(const Verb& verb, const std::string& name,
                                          const std::string& description) {
  auto ifname = std::make_shared<std::string>();
  verb.AddOption(name, *ifname, description).Required().Interface();
  return ifname;
}

std::shared_ptr<std::string> AddIfname(const Verb& verb) {
  return AddInterface(verb, "IFNAME", "Name of the interface, such as eth0");
}

void AddVerb(const Group& group, Context& context, const std::string& name,
             const std::string& description, const std::string& examples,
             void (*run)(const Context&)) {
  AddVerb(group, context, name, description, examples).Run([&context, run] { run(context); });
}

void AddVerb(const Group& group, Context& context, const std::string& name,
             const std::string& description, const std::string& examples,
             std::shared_ptr<std::string> (*addOperand)(const Verb&),
             void (*run)(const Context&, const std::string&)) {
  const Verb verb = AddVerb(group, context, name, description, examples);
  const auto operand = addOperand(verb);
  verb.Run([&context, operand, run] { run(context, *operand); });
}

// ---- the whole

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>("Reads and changes the networking of the appliance.",
                                      "zarnnetctl")) {
  app_->set_version_flag("--version", "zarnnetctl " ZARNNETCTL_VERSION);
  app_->require_subcommand(1);
  app_->formatter_fn([](const CLI::App* app, const std::string& /*name*/,
                        CLI::AppFormatMode /*mode*/) { return HelpOf(*app); });
  app_->footer(
      "Exit status: 0 done, 1 failed and put back, 2 wrong usage, 3 refused, 4 not in effect and\n"
      "put back, 5 somebody else is changing, 6 only root may, 7 no such thing, 8 not wholly put\n"
      "back. Each verb has its own --help.");
}

CommandLine::~CommandLine() = default;

void CommandLine::Run(const std::vector<std::string>& words) const try {
  app_->parse(std::vector<std::string>(words.rbegin(), words.rend()));
} catch (const CLI::Success& request) {
  app_->exit(request);  // prints the help or the version
} catch (const CLI::ParseError& error) {
  const std::string problem = ProblemWith(*ChosenOf(*app_), app_->remaining(true));
  throw WrongUsage(problem.empty() ? error.what() : problem);
}

std::string CommandLine::ChosenVerb() const {
  return PathOf(*ChosenOf(*app_));
}

std::string CommandLine::WhatWasGiven() const {
  const std::string given = GivenTo(*ChosenOf(*app_));
  if (given.empty()) return "the library does not take what the machine's files hold";
  return "the library does not take " + given;
}

std::string CommandLine::CompletionsOf(const std::vector<std::string>& words) const {
  return Completions(*app_, words);
}

std::string CommandLine::ManualSynopsis() const {
  return Synopsis(*app_);
}

}  // namespace tool
