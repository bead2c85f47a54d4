// zarnnetctl: the appliance's networking from the command line, over the library's public
// interface.
#include <algorithm>
#include <cstring>
#include <iostream>
#include <new>

#include "commands.h"

namespace tool {

CLI::App* AddGroup(CLI::App& app, const std::string& name, const std::string& description) {
  CLI::App* const group = app.add_subcommand(name, description);
  group->require_subcommand(1);
  return group;
}

CLI::App* AddVerb(CLI::App& group, Context& context, const std::string& name,
                  const std::string& description, const std::string& examples) {
  CLI::App* const verb = group.add_subcommand(name, description);
  verb->add_flag("--json", context.json, "Print JSON, errors too");
  verb->footer("Examples:\n" + examples);
  return verb;
}

std::shared_ptr<std::string> AddIfname(CLI::App* verb) {
  auto ifname = std::make_shared<std::string>();
  verb->add_option("IFNAME", *ifname, "Name of the interface, such as eth0")->required();
  return ifname;
}

namespace {

// A command line may be refused before the option is read; the refusal has to be JSON all the same.
bool AsksForJson(int argc, char** argv) {
  return std::any_of(argv, argv + argc,
                     [](const char* word) { return std::strcmp(word, "--json") == 0; });
}

// The words of the verb up to where the command line was understood.
std::string ChosenVerb(const CLI::App& app) {
  std::string words = app.get_name();
  const CLI::App* chosen = &app;
  while (!chosen->get_subcommands().empty()) {
    chosen = chosen->get_subcommands().front();
    words += " " + chosen->get_name();
  }
  return words;
}

// Output that did not reach its file is a failure: the caller would take it for the whole.
ExitStatus Finish(const Context& context) {
  if (std::cout.flush()) return kDone;
  return ReportFailure(context, Failure("cannot write the output", std::nullopt, "write failed"));
}

ExitStatus Parse(CLI::App& app, const Context& context, int argc, char** argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request);  // prints the help or the version
  } catch (const CLI::ParseError& error) {
    Context asked = context;
    asked.json = AsksForJson(argc, argv);
    return ReportUsage(asked, error.what(), ChosenVerb(app));
  } catch (const Failure& failure) {
    return ReportFailure(context, failure);
  } catch (const std::bad_alloc&) {
    return ReportFailure(
        context, Failure("cannot go on", ZARNNETERR_NO_MEMORY, ReasonOf(ZARNNETERR_NO_MEMORY)));
  }
  return Finish(context);
}

int Run(int argc, char** argv) {
  CLI::App app("Reads and changes the networking of the appliance.", "zarnnetctl");
  Context context;
  app.set_version_flag("--version", "zarnnetctl " ZARNNETCTL_VERSION);
  app.require_subcommand(1);
  app.footer("Exit status: 0 done, 1 failed, 2 wrong usage. Each verb has its own --help.");
  AddIfCommands(app, context);
  AddIpCommands(app, context);
  AddLinkCommands(app, context);
  AddBlockCommands(app, context);
  AddIpv6Commands(app, context);
  AddDnsCommands(app, context);
  AddRouteCommands(app, context);
  AddPppoeCommands(app, context);
  AddTunnelCommands(app, context);
  AddBondCommands(app, context);
  AddBridgeCommands(app, context);
  AddTopologyCommands(app, context);
  AddDhcpdCommands(app, context);
  AddNetCommands(app, context);
  AddStatCommands(app, context);
  AddSystemCommands(app, context);
  return Parse(app, context, argc, argv);
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
