// SPDX-License-Identifier: Apache-2.0
// Brings the relay process of one interface in line with its settings. A process is known by its
// command line: the relays of other interfaces have the same name.
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/facts/link.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

std::string CommandLine(const char* ifname) {
  return Format("%s -C %s", paths::kPppoeRelay, ifname);
}

std::string CommandLine(const char* ifname, const char* server) {
  return Format("%s -C %s -S %s", paths::kPppoeRelay, ifname, server);
}

bool LeadsToLocalLan(const char* ifname) {
  constexpr Place kAt("net_is_if_bridge_type", __LINE__);
  const auto role = facts::ConfiguredBridgeRole(ifname);
  if (role) return role->type == ZARNBRIDGE_LOCAL_LAN;
  LOG_ERROR_AT(kAt, "%s:%d Failed to get PPPoE relay config");
  return false;
}

bool ShouldRun(const char* ifname, const PPPOE_RELAY_CONF& conf) {
  return LeadsToLocalLan(ifname) && conf.enable == 1 && facts::IsUp(ifname);
}

// Waits for the end, so that no second relay answers beside a new one.
bool Stop(const char* ifname) {
  if (EndProcesses(CommandLine(ifname))) return true;
  LOG_ERROR("%s:%d Failed to kill process");
  return Fail(ZARNNETERR_COMMAND, false);
}

}  // namespace

bool pppoe::ApplyRelay(const char* ifname) {
  PPPOE_RELAY_CONF conf{};
  if (!ReadRelay(ifname, &conf)) return false;
  if (!ShouldRun(ifname, conf)) return Stop(ifname);
  if (IsRunning(CommandLine(ifname))) {
    if (IsRunning(CommandLine(ifname, conf.server))) return true;
    if (!Stop(ifname)) return false;
  }
  // The program puts itself into the background.
  return Run(paths::kPppoeRelay, "-C", ifname, "-S", conf.server);
}

int ZARNNetApplyPPPoERelayConfig(const char* ifname) {
  return Boundary(-1, [&]() -> int {
    if (ifname == nullptr) {
      LOG_ERROR("%s:%d Bad parameter");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return pppoe::ApplyRelay(ifname) ? 0 : -1;
  });
}
