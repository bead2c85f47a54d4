// SPDX-License-Identifier: Apache-2.0
// Is an interface a passive member of a bond, of the kernel's or of Open vSwitch?
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/record.h"
#include "frame/os/kernel.h"

using namespace frame;

int ZARNNetIfIsBondingPassive(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const InetSocket socket;
    if (!socket.IsOpen()) {
      LOG_ERROR("%s:%d Cannot open control socket");
      return Fail(ZARNNETERR_OPEN, 0);
    }
    const auto flags = socket.Flags(szIfname);
    if (!flags) {
      const ZARNNETERROR code = RefusalCode();
      LOG_NOTE("%s:%d Cannot get flags of network interface: %m");
      return Fail(code, 0);
    }
    return facts::IsBondingPassive(szIfname, *flags) ? 1 : 0;
  });
}
