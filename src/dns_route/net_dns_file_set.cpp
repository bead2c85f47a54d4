// Replaces the resolver's file, and tells the appliance before and after.
#include <cstring>
#include <string>

#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/ipv4.h>

#include "dns_route/server_lines.h"
#include "frame/log.h"
#include "frame/paths.h"
#include "frame/plugin_event.h"
#include "frame/rewrite.h"

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
  std::string text = dns::ServerLines(servers);
  for (int i = 0; !IsEmptyList(extra) && i < extra->nItem; ++i)
    text.append(KOPACSzListGet(extra, i)).append("\n");
  return text;
}

// An event that could not be delivered never stops a change; the hook has logged it.
void Announce(int stage, const KOPACSZLIST* servers) {
  static_cast<void>(ZARNNetDNSChangeHook(stage, servers));
}

}  // namespace

int ZARNNetDNSFileSet(PKOPACSZLIST pServers, PKOPACSZLIST pExtra) try {
  if (IsEmptyList(pServers) || !AreLines(pServers) || !AreLines(pExtra)) {
    return FRAME_FAIL(kBadParameter, -1);
  }
  Rewrite rewrite(paths::kResolv);
  if (!rewrite.IsOpen()) return FRAME_FAIL(kOpen, -1);
  // Servers that only root can look up are better than none.
  if (!rewrite.SetMode(dns::kFileMode)) LOG_ERROR("%s:%d chmod %s failed: %m", paths::kResolv);
  if (!rewrite.Fill(ResolverText(pServers, pExtra))) return FRAME_FAIL(kWrite, -1);
  Announce(kStageBefore, pServers);
  if (!rewrite.TakeEffect()) return FRAME_FAIL(kRename, -1);
  Announce(kStageAfter, pServers);
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)
