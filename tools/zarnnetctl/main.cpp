// SPDX-License-Identifier: Apache-2.0
// zarnnetctl: the appliance's networking from the command line, over the library's public
// interface.
#include <algorithm>
#include <clocale>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "commands.h"

namespace tool {
namespace {

using Words = std::vector<std::string>;

// Options of every verb may stand anywhere before "--", in front of the verb too.
Words TakeOptionsOfAll(Words words, Context* context) {
  const auto end = std::find(words.begin(), words.end(), "--");
  const auto kept = std::remove(words.begin(), end, "--json");
  context->json = kept != end;
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
    return ReportFailure(context, failure);
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

int Run(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  const CommandLine line;
  const Group verbs = line.Verbs();
  Context context;
  AddIfCommands(verbs, context);
  AddIpCommands(verbs, context);
  AddLinkCommands(verbs, context);
  AddBlockCommands(verbs, context);
  AddIpv6Commands(verbs, context);
  AddDnsCommands(verbs, context);
  AddRouteCommands(verbs, context);
  AddPppoeCommands(verbs, context);
  AddTunnelCommands(verbs, context);
  AddBondCommands(verbs, context);
  AddBridgeCommands(verbs, context);
  AddTopologyCommands(verbs, context);
  AddDhcpdCommands(verbs, context);
  AddNetCommands(verbs, context);
  AddStatCommands(verbs, context);
  AddMonitorCommands(verbs, context);
  AddSystemCommands(verbs, context);
  AddChangeCommands(verbs, context);
  AddDiffCommand(verbs, context);
  AddEditCommand(verbs, context);
  const Words words(argv + 1, argv + argc);
  if (AnswersPrograms(line, words)) return Finish(context);
  const Words own = TakeOptionsOfAll(words, &context);
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
