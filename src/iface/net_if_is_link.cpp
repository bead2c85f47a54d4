// Has an interface carrier? Open vSwitch devices answer for what is under them.
#include <string>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

constexpr int kOvsPort = 1;
constexpr int kOvsBond = 2;

int CarrierOf(const char* ifname) {
  const InetSocket socket;
  if (!socket.IsOpen()) {
    LOG_ERROR("%s:%d Cannot open control socket");
    return -1;
  }
  const auto flags = socket.Flags(ifname);
  if (!flags) {
    LOG_NOTE("%s:%d Cannot get link status of the %s: %m", ifname);
    return -1;
  }
  return (*flags & IFF_RUNNING) != 0 ? 1 : 0;
}

int LinkStatus(const char* ifname) {
  const int status = CarrierOf(ifname);
  if (status < 0) LOG_NOTE("%s:%d get link status failed on %s", ifname);
  return status;
}

// The first slave with carrier, or that cannot be asked, decides.
int AnySlaveLink(const char* bond) {
  ZARNLINKAGGROPT record{};
  if (ZARNNetLinkAggrGet(bond, &record) != 0) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond);
    return -1;
  }
  int status = -1;
  for (int i = 0; i < record.cSlave; ++i) {
    status = LinkStatus(record.rgszSlave[i]);
    if (status != 0) break;
  }
  return status;
}

}  // namespace

int ZARNNetIfIsLink(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const int ovs = KOPANetOVSIfIsMaster(szIfname);
    if (ovs == kOvsBond) return AnySlaveLink(szIfname);
    if (ovs != kOvsPort) return LinkStatus(szIfname);
    char original[IFNAMSIZ] = "";
    if (KOPANetOVSGetOriginalIf(szIfname, original, sizeof original) < 0) {
      LOG_ERROR("%s:%d get ovs origin interface error");
      return -1;
    }
    return LinkStatus(original);
  });
}
