// SPDX-License-Identifier: Apache-2.0
// Writes one tagged subnet of an interface into its files.
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

std::string FragmentText(const DHCP_SUBNET_CONF& conf) {
  const std::string_view tag = FieldText(conf.tag);
  std::string text = InterfaceLine(FieldText(conf.interface));
  text += RangeLine(tag, FieldText(conf.start), FieldText(conf.end), FieldText(conf.netmask),
                    conf.lease);
  text += OptionLine(tag, kRouter, FieldText(conf.router));
  const std::string_view domain = FieldText(conf.domain);
  if (!domain.empty()) text += OptionLine(tag, kDomainSearch, domain);
  std::string servers(FieldText(conf.dns1));
  if (!FieldText(conf.dns2).empty()) servers.append(",").append(FieldText(conf.dns2));
  return text + OptionLine(tag, kDnsServer, servers);
}

bool IsFit(const DHCP_SUBNET_CONF& conf) {
  return !IsRefusedName(std::string(FieldText(conf.interface)).c_str()) &&
         !IsRefusedName(std::string(FieldText(conf.tag)).c_str()) && !RefusesTexts(conf);
}

}  // namespace

int ZARNNetSetDhcpServerConfigFiles(const DHCP_SUBNET_CONF* conf, int enable) {
  return Boundary(0, [&]() -> int {
    if (conf == nullptr || !IsFit(*conf)) {
      LOG_ERROR("%s:%d Bad parameters.");
      return 0;
    }
    const std::string ifname(FieldText(conf->interface));
    const std::string_view tag = FieldText(conf->tag);
    if (!MakeFolderOrLog() || !WriteSwitchOrLog(TagInfo(ifname, tag), enable != 0)) return 0;
    if (enable == 0 || WriteFragmentOrLog(TagConf(ifname, tag), FragmentText(*conf))) return 1;
    LOG_ERROR("%s:%d Failed to set config file of dhcp server [%s].", ifname.c_str());
    return 0;
  });
}
