// The numbered subnets of an interface: their fragments and switches, written and read.
#include <algorithm>
#include <cstdlib>
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "dhcpd/options.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;

namespace {

constexpr int kDefaultLease = 3600;
constexpr int kIpv6 = 1;
constexpr char kOff[] = "off";
constexpr char kStateful[] = "stateful";
constexpr char kPrefixLength[] = "64";

bool MakeFolderOrLog() {
  if (MakeFolder()) return true;
  LOG_ERROR("%s:%d Failed to mkdir [%s]", kFolder);
  return false;
}

bool ReplaceFileOrLog(const std::string& path, std::string_view text) {
  if (ReplaceFile(path, text)) return true;
  LOG_ERROR("%s:%d Failed to open file [%s].", path.c_str());
  return false;
}

void Append(std::string* list, std::string_view item) {
  if (item.empty()) return;
  if (!list->empty()) list->append(",");
  list->append(item);
}

void DropLastComma(std::string* list) {
  while (list->ends_with(','))
    list->pop_back();
}

// ---- written: IPv4

std::string ServersV4(const DHCP_SUBNET_CONF& conf) {
  constexpr std::size_t kLongest = 4095;
  std::string list;
  for (const std::string_view server :
       {FieldText(conf.dns1), FieldText(conf.dns2), FieldText(conf.dns_more)})
    Append(&list, server);
  DropLastComma(&list);
  return list.substr(0, kLongest);
}

std::string FragmentV4(const std::string& tag, const char* ifname, const DHCP_SUBNET_CONF& conf) {
  std::string text = InterfaceLine(ifname);
  text += RangeLine(tag, FieldText(conf.start), FieldText(conf.end), FieldText(conf.netmask),
                    conf.lease);
  text += OptionLine(tag, kRouter, FieldText(conf.router));
  const std::string_view domain = FieldText(conf.domain);
  if (!domain.empty()) {
    text += OptionLine(tag, kDomainSearch, domain);
    text += OptionLine(tag, kDomainName, domain);
  }
  return text + OptionLine(tag, kDnsServer, ServersV4(conf));
}

// Adds the lines of the further options up to the first that is wrong, which is answered.
const DHCP_OPTION* AppendOptions(const std::string& tag, const DHCP_OPTION* option,
                                 std::string* text) {
  for (; option != nullptr && IsAcceptable(*option); option = option->next) {
    const std::string name = "option:" + std::string(FieldText(option->name));
    *text += OptionLine(tag, name, ValueText(*option));
  }
  return option;
}

// What stands before a wrong option is served all the same.
int WriteV4(const char* ifname, unsigned subnet, const DHCP_SUBNET_CONF& conf) {
  if (!MakeFolderOrLog()) return -1;
  const std::string tag = Format("%s%u", ifname, subnet);
  std::string text = FragmentV4(tag, ifname, conf);
  const DHCP_OPTION* const wrong = AppendOptions(tag, conf.options, &text);
  if (!ReplaceFileOrLog(SubnetConf(kStemV4, ifname, subnet), text)) return -1;
  if (wrong == nullptr) return 0;
  LOG_ERROR("%s:%d interface [%s] subnet [%d] option [%d] has wrong format", ifname,
            static_cast<int>(subnet), wrong->number);
  return -1;
}

// ---- written: IPv6

std::string ServersV6(const DHCP_SUBNET_CONF& conf) {
  std::string list;
  for (const std::string_view server : {FieldText(conf.dns1), FieldText(conf.dns2)}) {
    if (!server.empty()) list.append("[").append(server).append("],");
  }
  list.append(FieldText(conf.dns_more));
  DropLastComma(&list);
  return list;
}

std::string RangeV6(const std::string& tag, const char* ifname, const DHCP_SUBNET_CONF& conf,
                    std::string_view mode) {
  if (mode == kStateful) {
    return RangeLine(tag, FieldText(conf.start), FieldText(conf.end), kPrefixLength, conf.lease);
  }
  const std::string constructor = Format("constructor:%s,%s", ifname, std::string(mode).c_str());
  return RangeLine(tag, "::", constructor, kPrefixLength, conf.lease);
}

// A subnet that is off keeps its fragment: its switch is what counts.
int WriteV6(const char* ifname, unsigned subnet, const DHCP_SUBNET_CONF& conf) {
  const std::string_view mode = FieldText(conf.v6mode);
  if (mode == kOff) return 0;
  if (mode != "ra-only" && mode != "ra-stateless" && mode != kStateful) {
    LOG_ERROR("%s:%d Wrong dhcpv6 type [%s]", std::string(mode).c_str());
    return -1;
  }
  if (!MakeFolderOrLog()) return -1;
  const std::string tag = Format("%sv6%u", ifname, subnet);
  std::string text = InterfaceLine(ifname) + RangeV6(tag, ifname, conf, mode);
  const std::string servers = ServersV6(conf);
  if (!servers.empty()) text += OptionLine(tag, kDnsServerV6, servers);
  if (mode == kStateful) text += "enable-ra\n";
  return ReplaceFileOrLog(SubnetConf(kStemV6, ifname, subnet), text) ? 0 : -1;
}

// ---- read

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
  if (ReadKeyInto(path, kInterfaceKey, conf->interface)) return true;
  LOG_ERROR("%s:%d Failed to get key %s in %s", kInterfaceKey, path.c_str());
  return false;
}

bool ReadRangeV4(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfKey(path, kRangeKey);
  if (items.empty()) return MissesKey(kRangeKey);
  CopyItem(items, 1, kShort, conf->start);
  CopyItem(items, 2, kShort, conf->end);
  CopyItem(items, 3, kShort, conf->netmask);
  conf->lease = items.size() > 4 ? std::atoi(items[4].c_str()) : kDefaultLease;
  return true;
}

bool ReadServersV4(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kDnsServer);
  if (items.empty()) return MissesKey(kOptionKey);
  CopyItem(items, 2, kLong, conf->dns1);
  CopyItem(items, 3, kLong, conf->dns2);
  return true;
}

bool ReadRouterOf(const std::string& path, DHCP_SUBNET_CONF* conf) {
  const auto items = ItemsOfLineWith(path, kRouter);
  if (items.empty()) return MissesKey(kOptionKey);
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
  const auto items = ItemsOfKey(path, kRangeKey);
  if (items.empty()) return MissesKey(kRangeKey);
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
  if (items.empty()) return MissesKey(kOptionKey);
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

int DHCPTagConfGet(const char* ifname, unsigned subnet, int iptype, DHCP_SUBNET_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (IsRefusedName(ifname) || conf == nullptr) {
      LOG_ERROR("%s:%d Wrong parameters");
      return -1;
    }
    const char* const stem = StemOf(iptype);
    if (stem == nullptr) {
      LOG_ERROR("%s:%d Wrong or unsupported DHCPD ip type");
      return -1;
    }
    if (!Exists(SubnetConf(stem, ifname, subnet))) return 0;
    *conf = {};
    static_cast<void>(DHCPTagConfGetEnable(ifname, subnet, iptype, &conf->enable));
    const bool v6 = iptype == kIpv6;
    if (v6 ? ReadV6(ifname, subnet, conf) : ReadV4(ifname, subnet, conf)) return 1;
    LogUnread(ifname, subnet, v6);
    return -1;
  });
}

int DHCPTagConfGetEnable(const char* ifname, unsigned subnet, int iptype, int* enable) {
  return Boundary(-1, [&]() -> int {
    const char* const stem = StemOf(iptype);
    if (IsRefusedName(ifname) || enable == nullptr || stem == nullptr) {
      LOG_ERROR("%s:%d Wrong parameters");
      return -1;
    }
    const std::string path = SubnetInfo(stem, ifname, subnet);
    const bool exists = Exists(path);
    *enable = exists && KeyIs(path, kEnableKey, "yes") ? 1 : 0;
    return exists ? 1 : 0;
  });
}

int DHCPTagConfSetEnable(const char* ifname, unsigned subnet, int iptype, int enable) {
  return Boundary(-1, [&]() -> int {
    const char* const stem = StemOf(iptype);
    if (IsRefusedName(ifname) || stem == nullptr) {
      LOG_ERROR("%s:%d Wrong parameters");
      return -1;
    }
    if (!MakeFolderOrLog()) return -1;
    return ReplaceFileOrLog(SubnetInfo(stem, ifname, subnet), SwitchLine(enable == 1)) ? 0 : -1;
  });
}

int DHCPTagConfSetConfig(const char* ifname, unsigned subnet, int iptype,
                         const DHCP_SUBNET_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (StemOf(iptype) == nullptr) {
      LOG_ERROR("%s:%d Wrong DHCP ip type");
      return -1;
    }
    if (IsRefusedName(ifname) || conf == nullptr || RefusesTexts(*conf)) {
      LOG_ERROR("%s:%d Bad parameters.");
      return -1;
    }
    return iptype == kIpv6 ? WriteV6(ifname, subnet, *conf) : WriteV4(ifname, subnet, *conf);
  });
}

int DHCPTagConfSet(const char* ifname, unsigned subnet, int iptype, const DHCP_SUBNET_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (IsRefusedName(ifname) || conf == nullptr || RefusesTexts(*conf)) {
      LOG_ERROR("%s:%d parameter error");
      return -1;
    }
    if (DHCPTagConfSetEnable(ifname, subnet, iptype, conf->enable) < 0) {
      LOG_ERROR("%s:%d Failed to set to dhcp server info file [%s].", ifname);
      return -1;
    }
    if (DHCPTagConfSetConfig(ifname, subnet, iptype, conf) < 0) {
      LOG_ERROR("%s:%d Failed to set config file of dhcp server [%s].", ifname);
      return -1;
    }
    return 0;
  });
}
