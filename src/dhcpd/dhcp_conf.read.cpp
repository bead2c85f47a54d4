// SPDX-License-Identifier: Apache-2.0
// The fragment of a numbered subnet, read.
#include <algorithm>
#include <cstdlib>
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "dhcpd/options.h"
#include "dhcpd/subnet.h"
#include "frame/base/log.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

constexpr int kDefaultLease = 3600;

template <std::size_t N>
void CopyItem(const std::vector<std::string>& items, std::size_t index, std::size_t longest,
              char (&field)[N]) {
  if (index < items.size()) CopyText(items[index], field, std::min(N, longest + 1));
}

constexpr std::size_t kShort = 19;  // characters of an IPv4 address, with room
constexpr std::size_t kLong = 45;   // of one of either family
constexpr std::size_t kDomain = 254;

bool MissesKey(const char* key) {
  LOG_ERROR("%s:%d Failed to get key %s", key);
  return false;
}

bool ReadInterfaceOf(const std::string& path, DHCP_SUBNET_CONF* conf) {
  if (ReadKeyInto(path, kInterface, conf->interface)) return true;
  LOG_ERROR("%s:%d Failed to get key %s in %s", kInterface, path.c_str());
  return false;
}

bool ReadRangeV4(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfKey(path, kRange);
  if (items.empty()) return MissesKey(kRange);
  CopyItem(items, 1, kShort, conf->start);
  CopyItem(items, 2, kShort, conf->end);
  CopyItem(items, 3, kShort, conf->netmask);
  conf->lease = items.size() > 4 ? std::atoi(items[4].c_str()) : kDefaultLease;
  return true;
}

bool ReadServersV4(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kDnsServer);
  if (items.empty()) return MissesKey(kOption);
  CopyItem(items, 2, kLong, conf->dns1);
  CopyItem(items, 3, kLong, conf->dns2);
  return true;
}

bool ReadRouterOf(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kRouter);
  if (items.empty()) return MissesKey(kOption);
  CopyItem(items, items.size() - 1, kShort, conf->router);
  return true;
}

void ReadDomain(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kDomainSearch);
  if (!items.empty()) CopyItem(items, items.size() - 1, kDomain, conf->domain);
}

void ReadOptionsOf(const char* ifname, const std::string& path, DHCP_SUBNET_CONF* conf) {
  if (ReadOptions(ifname, path, &conf->options)) return;
  LOG_ERROR("%s:%d Failed to get dhcp options from [%s]", path.c_str());
}

bool ReadV4(const char* ifname, unsigned subnet, DHCP_SUBNET_CONF* conf) {
  const std::string path = SubnetConf(kStemV4, ifname, subnet);
  if (!ReadInterfaceOf(path, conf) || !ReadRangeV4(path, conf) || !ReadServersV4(path, conf) ||
      !ReadRouterOf(path, conf)) {
    return false;
  }
  ReadDomain(path, conf);
  ReadOptionsOf(ifname, path, conf);
  return true;
}

int LeaseOf(const std::string& text) {
  char* end = nullptr;
  const long lease = std::strtol(text.c_str(), &end, 10);
  return end == text.c_str() ? kDefaultLease : static_cast<int>(lease);
}

// The range is made of the interface's own prefix, or given from one address to another.
bool ReadRangeV6(const std::string& path, DHCP_SUBNET_CONF* conf) {
  constexpr std::size_t kConstructed = 6;
  constexpr std::size_t kGiven = 5;
  const auto items = ItemsOfKey(path, kRange);
  if (items.empty()) return MissesKey(kRange);
  if (items.size() == kConstructed) {
    CopyItem(items, 3, sizeof conf->v6mode - 1, conf->v6mode);
    conf->lease = LeaseOf(items[5]);
    return true;
  }
  if (items.size() != kGiven) {
    LOG_ERROR("%s:%d Failed to parse DHCP range of [%s]", path.c_str());
    return false;
  }
  CopyText(kStateful, conf->v6mode);
  CopyItem(items, 1, kLong, conf->start);
  CopyItem(items, 2, kLong, conf->end);
  conf->lease = items[4].empty() ? kDefaultLease : std::atoi(items[4].c_str());
  return true;
}

// Without its brackets.
std::string Unbracketed(const std::string& item) {
  return item.size() < 2 ? std::string() : item.substr(1, item.size() - 2);
}

bool ReadServersV6(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kDnsServerV6);
  if (items.empty()) return MissesKey(kOption);
  if (items.size() > 2) CopyText(Unbracketed(items[2]), conf->dns1);
  if (items.size() > 3) CopyText(Unbracketed(items[3]), conf->dns2);
  return true;
}

bool ReadV6(const char* ifname, unsigned subnet, DHCP_SUBNET_CONF* conf) {
  const std::string path = SubnetConf(kStemV6, ifname, subnet);
  return ReadRangeV6(path, conf) && ReadServersV6(path, conf);
}

void LogUnread(const char* ifname, unsigned subnet, bool v6) {
  if (v6) {
    LOG_ERROR("%s:%d Failed to get DHCPv6 Server config from [%s, %u]", ifname, subnet);
  } else {
    LOG_ERROR("%s:%d Failed to get DHCP Server config from [%s, %u]", ifname, subnet);
  }
}

}  // namespace

bool dhcpd::ReadSubnet(const char* ifname, unsigned subnet, bool v6, DHCP_SUBNET_CONF* conf) {
  if (v6 ? ReadV6(ifname, subnet, conf) : ReadV4(ifname, subnet, conf)) return true;
  LogUnread(ifname, subnet, v6);
  return false;
}
