// SPDX-License-Identifier: Apache-2.0
// The steps that a VLAN's create and its remove share: an interface's address is on another one.
#pragma once

#include <string>

#include "frame/base/error.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

namespace virtual_if {

// Runs the network start script. Its status does not matter.
template <class... Names>
void RunStartScript(const char* action, const Names&... ifnames) {
  const frame::ErrorUnchanged ofChange;
  static_cast<void>(frame::Run(frame::paths::kNetworkScript, action, ifnames...));
}

// Switches PPPoE off on an interface that is about to lose its address. A failure is logged in the
// caller's name and stops nothing.
void DisablePppoe(const std::string& ifname, const frame::Place& at = {});

// Gives a started interface the time to appear, then tells the firewall, traffic control and the
// DHCP server. The first that fails ends it; a program is logged in the caller's name.
[[nodiscard]] bool TellFollowers(const std::string& oldName, const std::string& newName,
                                 const frame::Place& at = {});

}  // namespace virtual_if
