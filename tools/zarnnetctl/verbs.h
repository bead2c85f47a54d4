// SPDX-License-Identifier: Apache-2.0
// The words of the command line: groups, verbs, and what a verb takes. These are handles; what they
// stand for lives as long as the command line. The library that reads the words is included by
// verbs.cpp alone: it takes longer to compile than all the verbs.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "output.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tool {

// A command line that cannot be understood. A verb throws it for what only the verb can tell.
class WrongUsage : public std::exception {
 public:
  explicit WrongUsage(std::string problem) : problem_(std::move(problem)) {}
  WrongUsage(const std::string& word, const std::string& problem)
      : WrongUsage(word + ": " + problem) {}

  [[nodiscard]] const char* what() const noexcept override { return problem_.c_str(); }

 private:
  std::string problem_;
};

// An operand or an option of a verb.
class Word {
 public:
  // Says what is wrong with a value; empty for a good one.
  using Check = std::function<std::string(const std::string& value)>;

  explicit Word(CLI::Option* option) : option_(option) {}

  Word Required() const;
  Word OneOf(const std::vector<std::string>& values) const;
  Word Interface() const;  // completed with the names of interfaces
  Word File() const;       // completed with files
  Word Within(int least, int most) const;
  Word Within(double least, double most) const;
  Word Checked(const Check& check, const std::string& shape) const;
  Word Count(int least, int most) const;
  Word Needs(const Word& other) const;
  Word Excludes(const Word& other) const;

 private:
  CLI::Option* option_;
};

class Verb {
 public:
  explicit Verb(CLI::App* verb) : verb_(verb) {}

  // An option when the name begins with "-", else an operand. Values are texts and numbers, several
  // in a vector, none given in an optional; verbs.cpp lists the types.
  template <class Value>
  Word AddOption(const std::string& name, Value& value, const std::string& description) const;
  Word AddFlag(const std::string& name, bool& value, const std::string& description) const;

  // What the verb does once its words are read.
  void Run(const std::function<void()>& action) const;

 private:
  CLI::App* verb_;
};

// The command line itself is one, too.
struct Group {
  CLI::App* app;
};

// A group of verbs, of which one must follow.
Group AddGroup(const Group& group, const std::string& name, const std::string& description);

// A verb with the options that all have; the examples stand at the end of its help.
Verb AddVerb(const Group& group, Context& context, const std::string& name,
             const std::string& description, const std::string& examples);

// Whether a change has the flag --plan, by which it is shown and not made.
enum class Planning { kFlag, kNone };

// A verb that makes a change: with the options that every change has.
Verb AddChange(const Group& group, Context& context, const std::string& name,
               const std::string& description, const std::string& examples,
               Planning planning = Planning::kFlag);

// A verb that acts at once, and is no change that can be undone. It can be planned.
Verb AddAct(const Group& group, Context& context, const std::string& name,
            const std::string& description, const std::string& examples);
void AddAct(const Group& group, Context& context, const std::string& name,
            const std::string& description, const std::string& examples, void (*run)(Context&));

// Adds an operand that must be given; its value is there when the verb runs.
std::shared_ptr<std::string> AddOperand(const Verb& verb, const std::string& name,
                                        const std::string& description);

// The same for the name of an interface, which is completed.
std::shared_ptr<std::string> AddInterface(const Verb& verb, const std::string& name,
                                          const std::string& description);
std::shared_ptr<std::string> AddIfname(const Verb& verb);

// A whole verb that takes no words of its own, and one that takes the operand that is added so.
void AddVerb(const Group& group, Context& context, const std::string& name,
             const std::string& description, const std::string& examples,
             void (*run)(const Context&));
void AddVerb(const Group& group, Context& context, const std::string& name,
             const std::string& description, const std::string& examples,
             std::shared_ptr<std::string> (*addOperand)(const Verb&),
             void (*run)(const Context&, const std::string&));

class CommandLine {
 public:
  CommandLine();
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  [[nodiscard]] Group Verbs() const { return {app_.get()}; }

  // Runs the verb that the words choose, or prints the help or the version. Throws WrongUsage, and
  // what the verb throws.
  void Run(const std::vector<std::string>& words) const;

  // What the table of verbs says for other programs: grammar.h has the shapes.
  [[nodiscard]] std::string CompletionsOf(const std::vector<std::string>& words) const;
  [[nodiscard]] std::string ManualSynopsis() const;

  // The words of the verb up to where the command line was understood.
  [[nodiscard]] std::string ChosenVerb() const;

  // A sentence about the words that the library did not take.
  [[nodiscard]] std::string WhatWasGiven() const;

 private:
  std::unique_ptr<CLI::App> app_;
};

}  // namespace tool
