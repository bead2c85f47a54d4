// SPDX-License-Identifier: Apache-2.0
#include "name_servers.h"

#include <nlohmann/json.hpp>

#include "list.h"
#include "query.h"
#include "wish.h"

namespace tool {

std::optional<std::vector<std::string>> NameServersInUse() {
  NameList servers;
  ForgetErrors();
  if (ZARNNetDNSListGet(servers.Out()) >= 0) return servers.Items();
  if (!IsRootsLock()) return std::nullopt;
  return TextsOf(PartOf(ReadLiveState({"dns"}), "/dns/servers"));
}

}  // namespace tool
