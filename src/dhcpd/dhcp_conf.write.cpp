// SPDX-License-Identifier: Apache-2.0
// The fragment of a numbered subnet, written.
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "dhcpd/options.h"
#include "dhcpd/subnet.h"
#include "frame/base/log.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

constexpr char kOff[] = "off";
constexpr char kPrefixLength[] = "64";

void Append(std::string* list, std::string_view item) {
  if (item.empty()) return;
  if (!list->empty()) list->append(",");
  list->append(item);
}

void DropLastComma(std::string* list) {
  while (list->ends_with(','))
    list->pop_back();
}

// ---- IPv4

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

bool WriteV4(const char* ifname, unsigned subnet, const DHCP_SUBNET_CONF& conf) {
  if (!MakeFolderOrLog()) return false;
  const std::string tag = Format("%s%u", ifname, subnet);
  std::string text = FragmentV4(tag, ifname, conf);
  const DHCP_OPTION* const wrong = AppendOptions(tag, conf.options, &text);
  if (!WriteFragmentOrLog(SubnetConf(kStemV4, ifname, subnet), text)) return false;
  if (wrong == nullptr) return true;
  LOG_ERROR("%s:%d interface [%s] subnet [%d] option [%d] has wrong format", ifname,
            static_cast<int>(subnet), wrong->number);
  return false;
}

// ---- IPv6

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
bool WriteV6(const char* ifname, unsigned subnet, const DHCP_SUBNET_CONF& conf) {
  const std::string_view mode = FieldText(conf.v6mode);
  if (mode == kOff) return true;
  if (mode != "ra-only" && mode != "ra-stateless" && mode != kStateful) {
    LOG_ERROR("%s:%d Wrong dhcpv6 type [%s]", std::string(mode).c_str());
    return false;
  }
  if (!MakeFolderOrLog()) return false;
  const std::string tag = Format("%sv6%u", ifname, subnet);
  std::string text = InterfaceLine(ifname) + RangeV6(tag, ifname, conf, mode);
  const std::string servers = ServersV6(conf);
  if (!servers.empty()) text += OptionLine(tag, kDnsServerV6, servers);
  if (mode == kStateful) text += "enable-ra\n";
  return WriteFragmentOrLog(SubnetConf(kStemV6, ifname, subnet), text);
}

}  // namespace

bool dhcpd::WriteSubnet(const char* ifname, unsigned subnet, bool v6,
                        const DHCP_SUBNET_CONF& conf) {
  return v6 ? WriteV6(ifname, subnet, conf) : WriteV4(ifname, subnet, conf);
}
