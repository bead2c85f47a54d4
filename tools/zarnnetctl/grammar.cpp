// SPDX-License-Identifier: Apache-2.0
// What the table of verbs says of itself.
#include "grammar.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>

#include "change_call.h"
#include "nearest.h"
#include "query.h"

namespace tool {
namespace {

using Apps = std::vector<const CLI::App*>;
using Options = std::vector<const CLI::Option*>;

Apps VerbsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* verb) { return !verb->get_name().empty(); });
}

Options OptionsOf(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

Options OperandsOf(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

bool IsOfEveryChange(const CLI::Option& option) {
  return option.get_group() == kChangeGroup;
}

// The options of the verb itself, or those of every change.
Options OptionsOf(const CLI::App& app, bool ofEveryChange) {
  Options options = OptionsOf(app);
  std::erase_if(options, [&](const CLI::Option* option) {
    return IsOfEveryChange(*option) != ofEveryChange;
  });
  return options;
}

bool TakesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

bool TakesMany(const CLI::Option& option) {
  return option.get_items_expected_max() > 1;
}

// "--mode", or "-6" where there is no long name.
std::string NameOf(const CLI::Option& option) {
  const auto& names = option.get_lnames();
  return names.empty() ? "-" + option.get_snames().front() : "--" + names.front();
}

std::string ShapeOf(const CLI::Option& option) {
  std::string shape = option.get_type_name();
  if (shape == "TEXT") return "VALUE";
  if (shape == "INT" || shape == "UINT" || shape == "FLOAT" || shape.find(':') != std::string::npos)
    return "N";
  return shape;
}

std::vector<std::string> NamesOf(const Apps& apps) {
  std::vector<std::string> names;
  for (const CLI::App* app : apps)
    names.push_back(app->get_name());
  return names;
}

// ---- help

std::string UsageWord(const CLI::Option& option) {
  if (option.nonpositional()) {
    const std::string text = NameOf(option) + (TakesValue(option) ? " " + ShapeOf(option) : "");
    return option.get_required() ? text : "[" + text + "]";
  }
  const std::string text = option.get_single_name() + (TakesMany(option) ? "..." : "");
  return option.get_required() ? text : "[" + text + "]";
}

std::string UsageLine(const CLI::App& app) {
  std::string line = "Usage: " + PathOf(app);
  for (const CLI::Option* option : OptionsOf(app, false)) {
    if (NameOf(*option) != "--help") line += " " + UsageWord(*option);
  }
  if (!OptionsOf(app, true).empty()) line += " [CHANGE OPTIONS]";
  for (const CLI::Option* operand : OperandsOf(app))
    line += " " + UsageWord(*operand);
  return line + (VerbsOf(app).empty() ? "\n" : " VERB\n");
}

struct Entry {
  std::string left;
  std::string right;
};

std::string Section(const std::string& heading, const std::vector<Entry>& entries) {
  constexpr std::size_t kWidest = 26;  // what is wider has its description on the next line
  if (entries.empty()) return {};
  std::string text = "\n" + heading + ":\n";
  for (const auto& [left, right] : entries) {
    text += "  " + left;
    text += left.size() > kWidest ? "\n" + std::string(kWidest + 4, ' ')
                                  : std::string(kWidest + 2 - left.size(), ' ');
    text += right + "\n";
  }
  return text;
}

Entry EntryOf(const CLI::Option& option) {
  if (option.get_positional()) {
    const std::string shape = option.get_type_name();
    return {option.get_single_name() + (shape.starts_with("{") ? " " + shape : ""),
            option.get_description()};
  }
  return {option.get_name(false, true) + (TakesValue(option) ? " " + ShapeOf(option) : ""),
          option.get_description()};
}

std::vector<Entry> EntriesOf(const Options& options) {
  std::vector<Entry> entries;
  for (const CLI::Option* option : options)
    entries.push_back(EntryOf(*option));
  return entries;
}

// ---- synopsis

// A name in mdoc: "--json" is "Fl -json".
std::string Flag(const CLI::Option& option) {
  const std::string text = "Fl " + NameOf(option).substr(1);
  return TakesValue(option) ? text + " Ar " + ShapeOf(option) : text;
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

std::string SynopsisOf(const CLI::App& verb) {
  const std::string path = PathOf(verb);
  std::string text = ".Nm\n.Cm " + path.substr(path.find(' ') + 1) + "\n";
  for (const CLI::Option* option : OptionsOf(verb, false)) {
    if (NameOf(*option) == "--help") continue;
    text += (option->get_required() ? "." : ".Op ") + Flag(*option) + "\n";
  }
  if (!OptionsOf(verb, true).empty()) text += ".Op Ar change options\n";
  for (const CLI::Option* operand : OperandsOf(verb)) {
    const std::string name =
        Lower(operand->get_single_name()) + (TakesMany(*operand) ? " ..." : "");
    text += (operand->get_required() ? ".Ar " : ".Op Ar ") + name + "\n";
  }
  return text;
}

// ---- completion

// The word where the command line stands: in a verb or a group, perhaps behind an option.
struct Place {
  const CLI::App* app;
  const CLI::Option* awaited = nullptr;  // the option whose value is to come
  int operands = 0;
};

const CLI::App* VerbNamed(const CLI::App& app, const std::string& name) {
  const Apps verbs = VerbsOf(app);
  const auto found = std::find_if(verbs.begin(), verbs.end(),
                                  [&](const CLI::App* verb) { return verb->get_name() == name; });
  return found == verbs.end() ? nullptr : *found;
}

void Advance(Place* place, const std::string& word) {
  if (place->awaited != nullptr) {
    place->awaited = nullptr;
  } else if (word.size() > 1 && word[0] == '-') {
    const CLI::Option* const option = place->app->get_option_no_throw(word);
    if (option != nullptr && TakesValue(*option)) place->awaited = option;
  } else if (const CLI::App* const verb = VerbNamed(*place->app, word)) {
    *place = {verb};
  } else {
    ++place->operands;
  }
}

const CLI::Option* OperandAt(const CLI::App& app, int index) {
  for (const CLI::Option* operand : OperandsOf(app)) {
    if (TakesMany(*operand) || index < operand->get_items_expected_max()) return operand;
    index -= operand->get_items_expected_max();
  }
  return nullptr;
}

std::vector<Entry> ValuesOf(const CLI::Option& option) {
  std::vector<Entry> values;
  const std::string shape = option.get_type_name();
  if (shape == kFileShape) return {{":files", ""}};
  if (shape.starts_with(kChangeShape)) {
    for (const auto& [number, state] : LastChanges())
      values.push_back({number, state});
  }
  std::vector<std::string> names;
  if (shape == kInterfaceShape) names = KernelInterfaces();
  if (shape.starts_with("{")) names = CLI::detail::split(shape.substr(1, shape.size() - 2), ',');
  values.reserve(names.size());
  for (const std::string& name : names)
    values.push_back({name, ""});
  return values;
}

std::vector<Entry> CandidatesAt(const Place& place, bool option) {
  if (place.awaited != nullptr) return ValuesOf(*place.awaited);
  std::vector<Entry> candidates;
  if (option) {
    for (const CLI::Option* each : OptionsOf(*place.app))
      candidates.push_back({NameOf(*each), each->get_description()});
    return candidates;
  }
  for (const CLI::App* verb : VerbsOf(*place.app))
    candidates.push_back({verb->get_name(), verb->get_description()});
  const CLI::Option* const operand = OperandAt(*place.app, place.operands);
  if (candidates.empty() && operand != nullptr) return ValuesOf(*operand);
  return candidates;
}

// ---- words that were meant otherwise

std::vector<std::string> OptionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : OptionsOf(app))
    names.push_back(NameOf(*option));
  return names;
}

}  // namespace

std::string PathOf(const CLI::App& app) {
  const CLI::App* const parent = app.get_parent();
  return parent == nullptr ? app.get_name() : PathOf(*parent) + " " + app.get_name();
}

std::string HelpOf(const CLI::App& app) {
  std::vector<Entry> verbs;
  for (const CLI::App* verb : VerbsOf(app))
    verbs.push_back({verb->get_name(), verb->get_description()});
  std::string text = app.get_description() + "\n" + UsageLine(app) + Section("Verbs", verbs) +
                     Section("Operands", EntriesOf(OperandsOf(app))) +
                     Section("Options", EntriesOf(OptionsOf(app, false))) +
                     Section(kChangeGroup, EntriesOf(OptionsOf(app, true)));
  if (!app.get_footer().empty()) text += "\n" + app.get_footer() + "\n";
  return text;
}

std::string Synopsis(const CLI::App& app) {
  std::string text;
  for (const CLI::App* verb : VerbsOf(app))
    text += VerbsOf(*verb).empty() ? SynopsisOf(*verb) : Synopsis(*verb);
  return text;
}

std::string Completions(const CLI::App& app, const std::vector<std::string>& words) {
  if (words.empty()) return {};
  Place place{&app};
  for (auto word = words.begin(); word + 1 != words.end(); ++word)
    Advance(&place, *word);
  std::string lines;
  for (const auto& [left, right] : CandidatesAt(place, words.back().starts_with("-"))) {
    if (left == ":files" || left.starts_with(words.back()))
      lines += left + (right.empty() ? "" : "\t" + right) + "\n";
  }
  return lines;
}

const CLI::App* ChosenOf(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? &app : ChosenOf(*chosen.front());
}

std::string ProblemWith(const CLI::App& chosen, const std::vector<std::string>& extras) {
  const auto names = NamesOf(VerbsOf(chosen));
  if (extras.empty()) return names.empty() ? "" : "give one of these verbs: " + Join(names, ", ");
  const std::string& word = extras.front();
  if (word.size() > 1 && word[0] == '-')
    return "there is no option '" + word + "'" + words::DidYouMean(word, OptionNames(chosen));
  if (names.empty()) return "'" + word + "' is one word too many";
  const std::string near = words::DidYouMean(word, names);
  return "there is no verb '" + word + "'" +
         (near.empty() ? "; give one of " + Join(names, ", ") : near);
}

std::string GivenTo(const CLI::App& verb) {
  std::vector<std::string> given;
  for (const Options& options : {OperandsOf(verb), OptionsOf(verb, false)}) {
    for (const CLI::Option* option : options) {
      if (option->count() == 0 || !TakesValue(*option)) continue;
      const std::string name =
          option->get_positional() ? option->get_single_name() : NameOf(*option);
      given.push_back(name + " '" + Join(option->results(), " ") + "'");
    }
  }
  return Join(given, ", ");
}

}  // namespace tool
