// zarnnetctl: the appliance's networking from the command line, over the library's public
// interface.
#include <algorithm>
#include <cstring>
#include <iostream>
#include <new>

#include "commands.h"

namespace tool {
namespace {

// A command line may be refused before the option is read; the refusal has to be JSON all the same.
bool AsksForJson(int argc, char** argv) {
  return std::any_of(argv, argv + argc,
                     [](const char* word) { return std::strcmp(word, "--json") == 0; });
}

// Output that did not reach its file is a failure: the caller would take it for the whole.
ExitStatus Finish(const Context& context) {
  if (std::cout.flush()) return kDone;
  return ReportFailure(context, Failure("cannot write the output", std::nullopt, "write failed"));
}

ExitStatus RunVerb(const CommandLine& line, const Context& context, int argc, char** argv) {
  try {
    line.Run(argc, argv);
  } catch (const WrongUsage& error) {
    Context asked = context;
    asked.json = AsksForJson(argc, argv);
    return ReportUsage(asked, error.what(), line.ChosenVerb());
  } catch (const Failure& failure) {
    return ReportFailure(context, failure);
  } catch (const std::bad_alloc&) {
    return ReportFailure(
        context, Failure("cannot go on", ZARNNETERR_NO_MEMORY, ReasonOf(ZARNNETERR_NO_MEMORY)));
  }
  return Finish(context);
}

int Run(int argc, char** argv) {
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
  AddSystemCommands(verbs, context);
  return RunVerb(line, context, argc, argv);
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
