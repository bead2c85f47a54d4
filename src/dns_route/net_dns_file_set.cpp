// SPDX-License-Identifier: Apache-2.0
// Replaces the resolver's file, and tells the appliance before and after.
#include <cstring>
#include <string>

#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "dns_route/resolver.h"
#include "dns_route/server_lines.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/rewrite.h"

using namespace frame;

namespace {

bool IsEmptyList(const KOPACSZLIST* list) {
  return list == nullptr || list->nItem <= 0;
}

// No text of a caller adds a line of its own to the file. An empty one is fine.
bool AreLines(const KOPACSZLIST* list) {
  for (int i = 0; !IsEmptyList(list) && i < list->nItem; ++i) {
    const char* const text = KOPACSzListGet(list, i);
    if (text == nullptr || std::strchr(text, '\n') != nullptr) return false;
  }
  return true;
}

std::string ResolverText(const KOPACSZLIST* servers, const KOPACSZLIST* extra) {
  std::string text = dns_route::ServerLines(servers);
  for (int i = 0; !IsEmptyList(extra) && i < extra->nItem; ++i)
    text.append(KOPACSzListGet(extra, i)).append("\n");
  return text;
}

// An event that could not be delivered never stops a change; the hook has logged it.
void Announce(int stage, const KOPACSZLIST* servers) {
  static_cast<void>(ipv4::TellDnsChange(stage, servers));
}

}  // namespace

bool dns_route::WriteResolver(const KOPACSZLIST* servers, const KOPACSZLIST* extra) {
  if (IsEmptyList(servers) || !AreLines(servers) || !AreLines(extra))
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  Rewrite rewrite(paths::kResolv);
  if (!rewrite.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  // Servers that only root can look up are better than none.
  if (!rewrite.SetMode(kFileMode)) LOG_ERROR("%s:%d chmod %s failed: %m", paths::kResolv);
  if (!rewrite.Fill(ResolverText(servers, extra))) return Fail(ZARNNETERR_WRITE, false);
  Announce(ZARNNETSTAGE_BEFORE, servers);
  if (!rewrite.TakeEffect()) return Fail(ZARNNETERR_RENAME, false);
  Announce(ZARNNETSTAGE_AFTER, servers);
  return true;
}

int ZARNNetDNSFileSet(PKOPACSZLIST pServers, PKOPACSZLIST pExtra) {
  return Boundary(-1, [&]() -> int { return dns_route::WriteResolver(pServers, pExtra) ? 0 : -1; });
}
