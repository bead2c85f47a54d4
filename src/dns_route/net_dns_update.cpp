// SPDX-License-Identifier: Apache-2.0
// Rebuilds the resolver's file from the servers of the mode that is set.
#include <string>
#include <vector>

#include <zarnnetsdk/dns_route.h>
#include <zarnsdk/zarnsdk.h>

#include "dns_route/resolver.h"
#include "dns_route/server_lines.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/line_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

constexpr std::size_t kLineSize = 1024;

bool AppendLines(const char* path, std::vector<std::string>* lines) {
  if (!Exists(path)) return true;
  const auto read = LinesOf(path);
  if (!read) return Fail(ZARNNETERR_READ, false);
  lines->insert(lines->end(), read->begin(), read->end());
  return true;
}

// Settings that cannot be read are no settings without the key: the servers would be the wrong
// ones.
bool ReadMode(bool* fixed) {
  constexpr std::size_t kSize = 16;
  const KeyValue mode = ReadKey(paths::kInfo, dns_route::kModeKey, kSize);
  *fixed = mode.text == dns_route::kStaticMode;
  return !mode.Unreadable() || !Exists(paths::kInfo) || Fail(ZARNNETERR_READ, false);
}

bool ReadSource(std::vector<std::string>* lines) {
  bool fixed = false;
  if (!ReadMode(&fixed)) return false;
  if (fixed) return AppendLines(paths::kResolvStatic, lines);
  return AppendLines(paths::kLearnedServersV4, lines) &&
         AppendLines(paths::kLearnedServersV6, lines);
}

bool Push(StringList* list, const std::string& text) {
  if (KOPACSzListPush(list->Out(), text.c_str()) >= 0) return true;
  LOG_ERROR("%s:%d Cannot push the list");
  return Fail(ZARNNETERR_NO_MEMORY, false);
}

// A line without a server stands for the server before it, an empty one at the beginning: the
// components that write these files count on as many servers as there are lines.
bool CollectServers(const std::vector<std::string>& lines, StringList* servers) {
  std::string server;
  for (const std::string& line : lines) {
    const std::string_view text = Trimmed(std::string_view(line).substr(0, kLineSize - 1));
    if (const auto scanned = dns_route::ScanServer(text)) server = *scanned;
    if (!Push(servers, server)) return false;
  }
  return true;
}

// Of the options only the domain is taken over.
bool CollectDomain(StringList* extra) {
  std::vector<std::string> options;
  if (!AppendLines(paths::kResolvOption, &options)) return false;
  for (const std::string& line : options) {
    if (line.starts_with("domain\t")) return Push(extra, line.substr(0, kLineSize - 1));
  }
  return true;
}

// The services look the servers up again; one that refuses has none of ours to lose.
void ReloadServices() {
  static_cast<void>(KOPAServiceReload("ddns"));
  if (KOPAServiceIsRunning("zarnrelayd") == 1) static_cast<void>(KOPAServiceReload("zarnrelayd"));
}

bool Update() {
  StringList servers(dns_route::kListCapacity);
  StringList extra(dns_route::kListCapacity);
  std::vector<std::string> lines;
  const Lock lock(kNetworkWrite);
  if (!lock.HeldOrLog() || !ReadSource(&lines) || !CollectServers(lines, &servers)) return false;
  if (servers.Count() == 0) return true;
  if (!CollectDomain(&extra) || !dns_route::WriteResolver(servers.Get(), extra.Get())) return false;
  ReloadServices();
  return true;
}

}  // namespace

bool dns_route::UpdateResolver() {
  return NoThrow(false, Update, [] { LOG_ERROR("%s:%d Failed to alloc memory."); });
}

int ZARNNetDNSUpdate(void) {
  return Boundary(-1, [&]() -> int { return dns_route::UpdateResolver() ? 0 : -1; });
}
