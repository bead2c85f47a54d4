// SPDX-License-Identifier: Apache-2.0
// Hanging up, when the interface that the PPPoE client dials on is to be used otherwise.
#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "pppoe/client.h"

using namespace frame;

bool pppoe::DisableOn(const std::string& ifname) {
  const auto connected = IsConnected(true);
  if (!connected || !*connected) return connected.has_value();
  PPPOE_CONF conf{};
  if (!ReadAccount(&conf)) return false;
  return FieldText(conf.eth) != ifname || HangUp();
}

int KOPADisablePPPoEOnIf(const char* ifname) {
  return Boundary(-1, [&]() -> int {
    if (ifname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return pppoe::DisableOn(ifname) ? 0 : -1;
  });
}
