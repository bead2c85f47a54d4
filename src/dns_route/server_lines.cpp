// SPDX-License-Identifier: Apache-2.0
// The lines of the resolver files: how servers are written into them, and found in them.
#include "dns_route/server_lines.h"

#include "frame/base/text.h"

std::string dns_route::ServerLines(const KOPACSZLIST* servers) {
  std::string text;
  for (int i = 0; i < servers->nItem; ++i)
    text.append(kServerWord).append("\t").append(KOPACSzListGet(servers, i)).append("\n");
  return text;
}

std::optional<std::string_view> dns_route::ScanServer(std::string_view line) {
  if (!line.starts_with(kServerWord)) return std::nullopt;
  const auto words = frame::SplitWords(line.substr(kServerWord.size()), " \t\r\n\v\f");
  if (words.empty()) return std::nullopt;
  return words.front();
}
