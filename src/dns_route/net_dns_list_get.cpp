// SPDX-License-Identifier: Apache-2.0
// The name servers: those that were fixed, and those that the resolver uses.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <zarnnetsdk/dns_route.h>

#include "dns_route/server_lines.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

// Appends the second word of every server line. A file that is not there has no servers.
bool AppendServers(const char* path, PKOPACSZLIST* list) {
  const File file = OpenFile(path, "r");
  if (!file) {
    const int reason = errno;
    LOG_ERROR("%s:%d Failed to open %s. (%s)", path, std::strerror(reason));
    return true;
  }
  char line[512];  // what is longer goes on as a line of its own
  while (std::fgets(line, sizeof line, file.get()) != nullptr) {
    if (!std::string_view(line).starts_with(dns_route::kServerWord)) continue;
    const auto words = SplitWords(line);
    if (words.size() < 2) continue;
    if (KOPACSzListPush(list, std::string(words[1]).c_str()) < 0) {
      return Fail(ZARNNETERR_NO_MEMORY, false);
    }
  }
  return std::ferror(file.get()) == 0 || Fail(ZARNNETERR_READ, false);
}

bool AppendActiveServers(PKOPACSZLIST* list) {
  const Lock lock(kNetworkRead);
  if (!lock.Held()) return Fail(ZARNNETERR_LOCK, false);
  return AppendServers(paths::kResolv, list);
}

}  // namespace

int ZARNNetStaticDNSListGet(PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    if (ppList == nullptr || *ppList == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return AppendServers(paths::kResolvStatic, ppList) ? 0 : -1;
  });
}

int ZARNNetDNSListGet(PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    if (ppList == nullptr || *ppList == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return AppendActiveServers(ppList) ? 0 : -1;
  });
}

int ZARNNetDNSGet(char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int {
    if (szBuf == nullptr || cbBuf <= 0) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    StringList servers(dns_route::kListCapacity);
    if (!AppendActiveServers(servers.Out())) return -1;
    const char* const first = servers.Count() > 0 ? servers[0] : "";
    CopyText(first, szBuf, static_cast<std::size_t>(cbBuf));
    return 0;
  });
}
