// SPDX-License-Identifier: Apache-2.0
// What a change would do, found by doing it in a private copy of the machine.
#pragma once

#include <string>

#include "steps/change_state.h"

namespace change {

// The plan as it is told, with its "result"; of an undo where there is no wish (null).
Json Plan(const Json& wish, const Options& options);

// What the DHCP server's own check says to the settings as a change would leave them.
struct ServersAnswer {
  std::string refusal;  // its words, with the setting; empty when it takes them
  std::string whyNotAsked;
};
ServersAnswer AskDhcpServer(const Change& change);

}  // namespace change
