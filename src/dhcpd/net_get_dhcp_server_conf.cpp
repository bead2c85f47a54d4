// SPDX-License-Identifier: Apache-2.0
// Reads one tagged subnet of an interface from its files.
#include <cstdlib>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

// Tagged subnets have IPv4 addresses and short domains: what is longer is cut to 19 characters.
constexpr std::size_t kFieldSize = 20;

void CopyShort(std::string_view text, char* field) {
  CopyText(text, field, kFieldSize);
}

bool ReadRange(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfKey(path, kRange);
  if (items.empty()) {
    LOG_ERROR("%s:%d Failed to get key %s", kRange);
    return false;
  }
  if (items.size() > 1) CopyShort(items[1], conf->start);
  if (items.size() > 2) CopyShort(items[2], conf->end);
  if (items.size() > 3) CopyShort(items[3], conf->netmask);
  if (items.size() > 4) conf->lease = std::atoi(items[4].c_str());
  return true;
}

// One server or two; what is neither is no list of this file's and leaves both empty.
bool ReadServers(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kDnsServer);
  if (items.empty()) {
    LOG_ERROR("%s:%d Failed to get key %s", kOption);
    return false;
  }
  if (items.size() != 3 && items.size() != 4) return true;
  CopyShort(items[2], conf->dns1);
  if (items.size() == 4) CopyShort(items[3], conf->dns2);
  return true;
}

bool ReadRouter(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kRouter);
  if (items.empty()) {
    LOG_ERROR("%s:%d Failed to get key %s", kOption);
    return false;
  }
  CopyShort(items.back(), conf->router);
  return true;
}

bool ReadInterface(const std::string& path, DHCP_SUBNET_CONF* conf) {
  if (ReadKeyInto(path, kInterface, conf->interface)) return true;
  LOG_ERROR("%s:%d Failed to get key %s in %s", kInterface, path.c_str());
  return false;
}

}  // namespace

int ZARNNetGetDhcpServerConf(const char* tag, const char* ifname, DHCP_SUBNET_CONF* conf) {
  return Boundary(
      0,
      [&]() -> int {
        if (tag == nullptr || ifname == nullptr || conf == nullptr) return 0;
        if (IsRefusedName(tag) || IsRefusedName(ifname)) return 0;
        const std::string path = TagConf(ifname, tag);
        if (!Exists(path)) {
          LOG_ERROR("%s:%d File [%s] does not exist.", path.c_str());
          return 0;
        }
        *conf = {};
        if (!ReadRange(path, conf) || !ReadServers(path, conf) || !ReadRouter(path, conf) ||
            !ReadInterface(path, conf)) {
          return 0;
        }
        if (IsSwitchedOn(TagInfo(ifname, tag))) conf->enable = 1;
        const auto domain = ItemsOfLineWith(path, kDomainSearch);
        if (!domain.empty()) CopyShort(domain.back(), conf->domain);
        CopyText(tag, conf->tag);
        return 1;
      },
      [&] { LOG_ERROR("%s:%d Failed to alloc memory."); });
}
