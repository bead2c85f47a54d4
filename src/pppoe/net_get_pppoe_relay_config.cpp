// SPDX-License-Identifier: Apache-2.0
// The relay settings of one interface, as they are stored.
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/key_file.h"
#include "pppoe/relay.h"

using namespace frame;

bool pppoe::ReadRelay(const char* ifname, PPPOE_RELAY_CONF* conf) {
  if (conf == nullptr || !CanHaveSettings(ifname)) {
    LOG_ERROR("%s:%d Wrong Parameter.");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  *conf = {};
  const std::string path = RelayFile(ifname);
  if (!MakeRelayFile(path)) return false;
  conf->enable = KeyIs(path, kEnable, kYes) ? 1 : 0;
  if (ReadOptionalKeyInto(path, kServer, conf->server)) return true;
  LOG_ERROR("%s:%d Failed to get key[%s] in file[%s].", kServer, path.c_str());
  return false;
}

int ZARNNetGetPPPoERelayConfig(const char* ifname, PPPOE_RELAY_CONF* conf) {
  return Boundary(-1, [&]() -> int { return pppoe::ReadRelay(ifname, conf) ? 0 : -1; });
}
