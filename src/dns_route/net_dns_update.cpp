// Rebuilds the resolver's file from the servers of the mode that is set.
#include <string>

#include <zarnnetsdk/dns_route.h>
#include <zarnsdk/zarnsdk.h>

#include "dns_route/server_lines.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

constexpr std::size_t kLineSize = 1024;

bool ReadLines(const char* path, StringList* lines) {
  if (!Exists(path)) return true;
  return KOPACFileReadLines(path, lines->Out()) >= 0 || Fail(ZARNNETERR_READ, false);
}

bool ReadSource(StringList* lines) {
  if (KeyIs(paths::kInfo, "dns_mode", "static")) return ReadLines(paths::kResolvStatic, lines);
  return ReadLines(paths::kLearnedServersV4, lines) && ReadLines(paths::kLearnedServersV6, lines);
}

bool Push(StringList* list, const char* text) {
  if (KOPACSzListPush(list->Out(), text) >= 0) return true;
  LOG_ERROR("%s:%d Cannot push the list");
  return Fail(ZARNNETERR_NO_MEMORY, false);
}

// A line without a server stands for the server before it, an empty one at the beginning: the
// components that write these files count on as many servers as there are lines.
bool CollectServers(const StringList& lines, StringList* servers) {
  std::string server;
  for (int i = 0; i < lines.Count(); ++i) {
    const std::string_view line = Trimmed(std::string_view(lines[i]).substr(0, kLineSize - 1));
    if (const auto scanned = dns::ScanServer(line)) server = *scanned;
    if (!Push(servers, server.c_str())) return false;
  }
  return true;
}

// Of the options only the domain is taken over.
bool CollectDomain(StringList* extra) {
  constexpr int kBeginsWith = 2;
  char line[kLineSize] = "";
  if (!Exists(paths::kResolvOption) ||
      KOPACFileGetLine(paths::kResolvOption, "domain\t", line, sizeof line, kBeginsWith) < 1) {
    return true;
  }
  return Push(extra, line);
}

// The services look the servers up again; one that refuses has none of ours to lose.
void ReloadServices() {
  static_cast<void>(KOPAServiceReload("ddns"));
  if (KOPAServiceIsRunning("zarnrelayd") == 1) static_cast<void>(KOPAServiceReload("zarnrelayd"));
}

}  // namespace

int ZARNNetDNSUpdate(void) {
  return Boundary(
      -1,
      [&]() -> int {
        StringList lines(dns::kListCapacity);
        StringList servers(dns::kListCapacity);
        StringList extra(dns::kListCapacity);
        const Lock lock(kNetworkWrite);
        if (!lock.Held()) {
          const InnerError inner;
          LOG_ERROR("%s:%d KOPACFileLock failed.[0x%04X %s:%d]", inner.code, inner.file,
                    inner.line);
          return Fail(ZARNNETERR_LOCK, -1);
        }
        if (!ReadSource(&lines) || !CollectServers(lines, &servers)) return -1;
        if (servers.Count() == 0) return 0;
        if (!CollectDomain(&extra)) return -1;
        if (ZARNNetDNSFileSet(*servers.Out(), *extra.Out()) < 0) return -1;
        ReloadServices();
        return 0;
      },
      [&] { LOG_ERROR("%s:%d Failed to alloc memory."); });
}
