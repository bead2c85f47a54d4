// SPDX-License-Identifier: Apache-2.0
// The fixed name servers: stored as a list, and put to use.
#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "dns_route/resolver.h"
#include "dns_route/server_lines.h"
#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/rewrite.h"

using namespace frame;

namespace {

bool AreServers(const KOPACSZLIST* list) {
  if (list == nullptr || list->nItem <= 0) return false;
  for (int i = 0; i < list->nItem; ++i) {
    const char* const server = KOPACSzListGet(list, i);
    if (server == nullptr || !ParseAddress(server)) return false;
  }
  return true;
}

// The configuration of the servers is no interface's own. An event that could not be delivered
// never stops a change; the hook has logged it.
void Announce(int stage, const KOPACSZLIST* servers) {
  static_cast<void>(ipv4::TellDnsConfigChange(stage, "", servers));
}

bool Store(const KOPACSZLIST* servers) {
  Rewrite rewrite(paths::kResolvStatic);
  if (!rewrite.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  if (!rewrite.SetMode(dns_route::kFileMode) || !rewrite.Fill(dns_route::ServerLines(servers))) {
    return Fail(ZARNNETERR_WRITE, false);
  }
  return rewrite.TakeEffect() || Fail(ZARNNETERR_RENAME, false);
}

}  // namespace

bool dns_route::SetServers(const KOPACSZLIST* servers) {
  Announce(ZARNNETSTAGE_BEFORE, servers);
  if (!Store(servers) || !SetMode(kStaticMode)) return false;
  Announce(ZARNNETSTAGE_AFTER, servers);
  return true;
}

int ZARNNetDNSListSet(PKOPACSZLIST pList) {
  return Boundary(-1, [&]() -> int {
    if (!AreServers(pList)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return dns_route::SetServers(pList) ? 0 : -1;
  });
}

int ZARNNetDNSSet(const char* szAddr) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szAddr) || !ParseAddress(szAddr)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    StringList list(1);
    list.Add(szAddr);
    return dns_route::SetServers(list.Get()) ? 0 : -1;
  });
}
