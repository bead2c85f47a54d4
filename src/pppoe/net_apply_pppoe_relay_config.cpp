// Brings the relay process of one interface in line with its settings. A process is known by its
// command line, which is that of nothing else.
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/pppoe.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

namespace {

constexpr uint32_t kRelayRole = 3;

std::string CommandLine(const char* ifname) {
  return Format("%s -C %s", paths::kPppoeRelay, ifname);
}

std::string CommandLine(const char* ifname, const char* server) {
  return Format("%s -C %s -S %s", paths::kPppoeRelay, ifname, server);
}

bool IsAlive(const std::string& commandLine) {
  return KOPACIsProcAlive(commandLine.c_str()) > 0;
}

bool ShouldRun(const char* ifname, const PPPOE_RELAY_CONF& conf) {
  return ZARNNetIsIfBridgeType(ifname, kRelayRole) == 1 && conf.enable == 1 &&
         ZARNNetIsIFUp(ifname) == 1;
}

// The program puts itself into the background.
int Start(const char* ifname, const char* server) {
  return Run(paths::kPppoeRelay, "-C", ifname, "-S", server) ? 0 : -1;
}

// Waits for the end, so that no second relay answers beside a new one.
int Stop(const char* ifname) {
  constexpr int kWait = 1;
  if (KOPACKill(CommandLine(ifname).c_str(), kWait) >= 0) return 0;
  LOG_ERROR("%s:%d Failed to kill process");
  return -1;
}

}  // namespace

int ZARNNetApplyPPPoERelayConfig(const char* ifname) {
  return Boundary(-1, [&]() -> int {
    if (ifname == nullptr) {
      LOG_ERROR("%s:%d Bad parameter");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    PPPOE_RELAY_CONF conf{};
    if (ZARNNetGetPPPoERelayConfig(ifname, &conf) < 0) return -1;
    if (!ShouldRun(ifname, conf)) return Stop(ifname);
    if (IsAlive(CommandLine(ifname))) {
      if (IsAlive(CommandLine(ifname, conf.server))) return 0;
      if (Stop(ifname) < 0) return -1;
    }
    return Start(ifname, conf.server);
  });
}
