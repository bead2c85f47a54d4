// The fixed name servers: stored as a list, and put to use.
#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/ipv4.h>

#include "dns_route/server_lines.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/plugin_event.h"
#include "frame/os/rewrite.h"

using namespace frame;

namespace {

bool AreServers(const KOPACSZLIST* list) {
  if (list == nullptr || list->nItem <= 0) return false;
  for (int i = 0; i < list->nItem; ++i) {
    if (ZARNNetGetAddrType(KOPACSzListGet(list, i)) == 0) return false;
  }
  return true;
}

// The configuration of the servers is no interface's own. An event that could not be delivered
// never stops a change; the hook has logged it.
void Announce(int stage, const KOPACSZLIST* servers) {
  static_cast<void>(ZARNNetDnsConfigChangeHook(stage, "", servers));
}

bool Store(const KOPACSZLIST* servers) {
  Rewrite rewrite(paths::kResolvStatic);
  if (!rewrite.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  if (!rewrite.SetMode(dns::kFileMode) || !rewrite.Fill(dns::ServerLines(servers))) {
    return Fail(ZARNNETERR_WRITE, false);
  }
  return rewrite.TakeEffect() || Fail(ZARNNETERR_RENAME, false);
}

}  // namespace

int ZARNNetDNSListSet(PKOPACSZLIST pList) {
  return Boundary(-1, [&]() -> int {
    if (!AreServers(pList)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    Announce(kStageBefore, pList);
    if (!Store(pList) || ZARNNetDNSModeSet("static") < 0) return -1;
    Announce(kStageAfter, pList);
    return 0;
  });
}

int ZARNNetDNSSet(const char* szAddr) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szAddr) || ZARNNetGetAddrType(szAddr) == 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    StringList list(1);
    if (KOPACSzListPush(list.Out(), szAddr) < 0) return Fail(ZARNNETERR_NO_MEMORY, -1);
    return ZARNNetDNSListSet(*list.Out());
  });
}
