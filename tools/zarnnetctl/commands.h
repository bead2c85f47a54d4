// SPDX-License-Identifier: Apache-2.0
// The verbs, one file a group. A group adds itself to the command line and runs when it is chosen.
#pragma once

#include <nlohmann/json.hpp>

#include "verbs.h"

namespace tool {

void AddIfCommands(const Group& app, Context& context);
void AddIpCommands(const Group& app, Context& context);
void AddLinkCommands(const Group& app, Context& context);
void AddBlockCommands(const Group& app, Context& context);
void AddDnsCommands(const Group& app, Context& context);
void AddRouteCommands(const Group& app, Context& context);
void AddBondCommands(const Group& app, Context& context);
void AddBridgeCommands(const Group& app, Context& context);
void AddTopologyCommands(const Group& app, Context& context);
void AddDhcpdCommands(const Group& app, Context& context);
void AddDhcpdSubnetCommands(const Group& dhcpd, Context& context);
void AddIpv6Commands(const Group& app, Context& context);
void AddNetCommands(const Group& app, Context& context);
void AddStatCommands(const Group& app, Context& context);
void AddMonitorCommands(const Group& app, Context& context);
void AddTunnelCommands(const Group& app, Context& context);
void AddPppoeCommands(const Group& app, Context& context);
void AddShowCommands(const Group& app, Context& context);
void AddSystemCommands(const Group& app, Context& context);
void AddChangeCommands(const Group& app, Context& context);
void AddHistoryCommands(const Group& app, Context& context);
void AddDiffCommand(const Group& app, Context& context);
void AddEditCommand(const Group& app, Context& context);
void AddReportCommand(const Group& app, Context& context);

}  // namespace tool
