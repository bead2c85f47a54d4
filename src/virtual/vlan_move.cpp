// SPDX-License-Identifier: Apache-2.0
// The steps that a VLAN's create and its remove share.
#include "virtual/vlan_move.h"

#include <unistd.h>

#include <zarnnetsdk/net_int.h>

#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/wait.h"

using namespace frame;

void virtual_if::DisablePppoe(const std::string& ifname, const Place& at) {
  if (pppoe::DisableOn(ifname)) return;
  const InnerError inner;
  LOG_ERROR_AT(at, "%s:%d Disable PPPoE interface %s Failed.[0x%04X %s:%d]", ifname.c_str(),
               inner.code, inner.file, inner.line);
}

bool virtual_if::TellFollowers(const std::string& oldName, const std::string& newName,
                               const Place& at) {
  const auto tell = [&](const char* program, const char* action) {
    if (Run(program, action, oldName, newName)) return true;
    LOG_ERROR_AT(at, "%s:%d Failed to %s -change_interface %s %s", program, oldName.c_str(),
                 newName.c_str());
    return Fail(ZARNNETERR_COMMAND, false, at);
  };
  constexpr unsigned kSeconds = 2;
  WaitSeconds(kSeconds);
  return tell(paths::kFirewall, "--change-adapter") &&
         tell(paths::kFirewall, "--change-security-adapter") &&
         tell(paths::kTrafficControl, "-change_interface") &&
         dhcpd::MoveInterface(oldName, newName) && dhcpd::RestartServer();
}
