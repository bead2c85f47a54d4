// SPDX-License-Identifier: Apache-2.0
// zarnnetctl: the appliance's networking from the command line, over the library's public
// interface.
#include <algorithm>
#include <clocale>
#include <iostream>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"

namespace tool {
namespace {

using Words = std::vector<std::string>;

// Options of every verb may stand anywhere before "--", in front of the verb too.
Words TakeOptionsOfAll(Words words, Context* context) {
  const auto end = std::find(words.begin(), words.end(), "--");
  const auto kept = std::remove_if(words.begin(), end, [&](const std::string& word) {
    bool* const option = word == "--json"                      ? &context->json
                         : word == "-q" || word == "--quiet"   ? &context->quiet
                         : word == "-v" || word == "--verbose" ? &context->verbose
                                                               : nullptr;
    if (option != nullptr) *option = true;
    return option != nullptr;
  });
  words.erase(kept, end);
  return words;
}

// Output that did not reach its file is a failure: the caller would take it for the whole.
int Finish(const Context& context) {
  if (std::cout.flush()) return context.status;
  return ReportFailure(context, Failure("cannot write the output", std::nullopt, "write failed"));
}

int RunVerb(const CommandLine& line, const Context& context, const Words& words) {
  try {
    line.Run(words);
  } catch (const WrongUsage& error) {
    return ReportUsage(context, error.what(), line.ChosenVerb());
  } catch (const Failure& failure) {
    if (!IsBare(failure)) return ReportFailure(context, failure);
    return ReportFailure(context, failure.Because(line.WhatWasGiven()));
  } catch (const std::bad_alloc&) {
    return ReportFailure(
        context, Failure("cannot go on", ZARNNETERR_NO_MEMORY, ReasonOf(ZARNNETERR_NO_MEMORY)));
  }
  return Finish(context);
}

// Words for the shell's completion and for the manual page, which nobody types.
bool AnswersPrograms(const CommandLine& line, const Words& words) {
  if (words.empty()) return false;
  if (words.front() == "__complete")
    std::cout << line.CompletionsOf({words.begin() + 1, words.end()});
  else if (words.front() == "__synopsis")
    std::cout << line.ManualSynopsis();
  else
    return false;
  return true;
}

using AddVerbs = void (*)(const Group&, Context&);

// The groups in the order of the help, each with the words that begin its verbs.
struct Part {
  AddVerbs add;
  std::vector<std::string_view> words;
};

const std::vector<Part>& Parts() {
  static const std::vector<Part> parts{
      {AddShowCommands, {"show"}},
      {AddIfCommands, {"if"}},
      {AddIpCommands, {"ip"}},
      {AddLinkCommands, {"link", "mac"}},
      {AddBlockCommands, {"block"}},
      {AddIpv6Commands, {"ipv6"}},
      {AddDnsCommands, {"dns"}},
      {AddRouteCommands, {"gateway", "route"}},
      {AddPppoeCommands, {"pppoe", "pppoe-relay"}},
      {AddTunnelCommands, {"tunnel"}},
      {AddBondCommands, {"bond"}},
      {AddBridgeCommands, {"bridge", "vlan"}},
      {AddTopologyCommands, {"topology", "conflict", "tree"}},
      {AddDhcpdCommands, {"dhcp", "dhcpd"}},
      {AddNetCommands, {}},
      {AddStatCommands, {"stat"}},
      {AddMonitorCommands, {}},
      {AddSystemCommands, {"mtu", "hostname"}},
      {AddChangeCommands, {"apply", "plan"}},
      {AddDiffCommand, {"diff"}},
      {AddEditCommand, {"edit"}},
      {AddReportCommand, {"report"}},
      {AddHistoryCommands, {"confirm", "history", "undo", "recover"}},
  };
  return parts;
}

// All verbs, or where the first word tells which is meant its group alone: to make them all takes
// longer than most of them run.
void AddVerbsFor(const Words& words, const Group& verbs, Context& context) {
  const std::string_view first = words.empty() ? std::string_view() : words.front();
  for (const Part& part : Parts()) {
    if (std::find(part.words.begin(), part.words.end(), first) != part.words.end())
      return part.add(verbs, context);
  }
  for (const Part& part : Parts())
    part.add(verbs, context);
}

int Run(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  const CommandLine line;
  Context context;
  const Words words(argv + 1, argv + argc);
  const Words own = TakeOptionsOfAll(words, &context);
  AddVerbsFor(own, line.Verbs(), context);
  if (AnswersPrograms(line, words)) return Finish(context);
  return RunVerb(line, context, own);
}

}  // namespace
}  // namespace tool

int main(int argc, char** argv) {
  try {
    return tool::Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "zarnnetctl: " << error.what() << '\n';
    return tool::kFailed;
  }
}
