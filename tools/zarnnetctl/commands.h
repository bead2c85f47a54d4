// The verbs, one file a group. A group adds itself to the command line and runs when it is chosen.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "output.h"

namespace tool {

void AddIfCommands(CLI::App& app, Context& context);
void AddIpCommands(CLI::App& app, Context& context);
void AddLinkCommands(CLI::App& app, Context& context);
void AddBlockCommands(CLI::App& app, Context& context);
void AddDnsCommands(CLI::App& app, Context& context);
void AddRouteCommands(CLI::App& app, Context& context);
void AddBondCommands(CLI::App& app, Context& context);
void AddBridgeCommands(CLI::App& app, Context& context);
void AddTopologyCommands(CLI::App& app, Context& context);
void AddDhcpdCommands(CLI::App& app, Context& context);
void AddDhcpdSubnetCommands(CLI::App& dhcpd, Context& context);
void AddIpv6Commands(CLI::App& app, Context& context);
void AddNetCommands(CLI::App& app, Context& context);
void AddStatCommands(CLI::App& app, Context& context);
void AddTunnelCommands(CLI::App& app, Context& context);
void AddPppoeCommands(CLI::App& app, Context& context);
void AddSystemCommands(CLI::App& app, Context& context);

// A group of verbs, of which one must follow.
CLI::App* AddGroup(CLI::App& app, const std::string& name, const std::string& description);

// A verb with the options that all have; the examples stand at the end of its help.
CLI::App* AddVerb(CLI::App& group, Context& context, const std::string& name,
                  const std::string& description, const std::string& examples);

// Adds the operand IFNAME; its value is there when the verb runs.
std::shared_ptr<std::string> AddIfname(CLI::App* verb);

}  // namespace tool
