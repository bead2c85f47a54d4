// The relay settings of one interface, as they are stored.
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/key_file.h"
#include "pppoe/relay.h"

using namespace frame;

int ZARNNetGetPPPoERelayConfig(const char* ifname, PPPOE_RELAY_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (conf == nullptr || !pppoe::CanHaveSettings(ifname)) {
      LOG_ERROR("%s:%d Wrong Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    *conf = {};
    const std::string path = pppoe::RelayFile(ifname);
    if (!pppoe::MakeRelayFile(path)) return -1;
    conf->enable = KeyIs(path, pppoe::kEnable, pppoe::kYes) ? 1 : 0;
    const KeyValue server = ReadKey(path, pppoe::kServer, sizeof conf->server);
    if (server.Unreadable()) {
      LOG_ERROR("%s:%d Failed to get key[%s] in file[%s].", pppoe::kServer, path.c_str());
      return -1;
    }
    CopyText(server.text, conf->server);
    return 0;
  });
}
