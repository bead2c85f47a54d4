// The fixed name servers: stored as a list, and put to use.
#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/ipv4.h>

#include "dns_route/server_lines.h"
#include "frame/containers.h"
#include "frame/log.h"
#include "frame/paths.h"
#include "frame/plugin_event.h"
#include "frame/rewrite.h"
#include "frame/text.h"

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
  if (!rewrite.IsOpen()) return FRAME_FAIL(kOpen, false);
  if (!rewrite.SetMode(dns::kFileMode) || !rewrite.Fill(dns::ServerLines(servers))) {
    return FRAME_FAIL(kWrite, false);
  }
  return rewrite.TakeEffect() || FRAME_FAIL(kRename, false);
}

}  // namespace

int ZARNNetDNSListSet(PKOPACSZLIST pList) try {
  if (!AreServers(pList)) return FRAME_FAIL(kBadParameter, -1);
  Announce(kStageBefore, pList);
  if (!Store(pList) || ZARNNetDNSModeSet("static") < 0) return -1;
  Announce(kStageAfter, pList);
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetDNSSet(const char* szAddr) try {
  if (IsEmpty(szAddr) || ZARNNetGetAddrType(szAddr) == 0) return FRAME_FAIL(kBadParameter, -1);
  StringList list(1);
  if (KOPACSzListPush(list.Out(), szAddr) < 0) return FRAME_FAIL(kNoMemory, -1);
  return ZARNNetDNSListSet(*list.Out());
}
FRAME_NO_EXCEPTIONS(-1)
