// SPDX-License-Identifier: Apache-2.0
// The numbered subnets of an interface: their fragments and switches, written and read.
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "dhcpd/subnet.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

constexpr int kIpv6 = 1;

bool SetEnabled(const char* ifname, unsigned subnet, int ipType, bool enable) {
  const char* const stem = StemOf(ipType);
  if (IsRefusedName(ifname) || stem == nullptr) {
    LOG_ERROR("%s:%d Wrong parameters");
    return false;
  }
  return MakeFolderOrLog() && WriteSwitchOrLog(SubnetInfo(stem, ifname, subnet), enable);
}

bool SetConfig(const char* ifname, unsigned subnet, int ipType, const DHCP_SUBNET_CONF* conf) {
  if (StemOf(ipType) == nullptr) {
    LOG_ERROR("%s:%d Wrong DHCP ip type");
    return false;
  }
  if (IsRefusedName(ifname) || conf == nullptr || RefusesTexts(*conf)) {
    LOG_ERROR("%s:%d Bad parameters.");
    return false;
  }
  return WriteSubnet(ifname, subnet, ipType == kIpv6, *conf);
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
    conf->enable = IsSwitchedOn(SubnetInfo(stem, ifname, subnet)) ? 1 : 0;
    return ReadSubnet(ifname, subnet, iptype == kIpv6, conf) ? 1 : -1;
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
    *enable = IsSwitchedOn(path) ? 1 : 0;
    return Exists(path) ? 1 : 0;
  });
}

int DHCPTagConfSetEnable(const char* ifname, unsigned subnet, int iptype, int enable) {
  return Boundary(
      -1, [&]() -> int { return SetEnabled(ifname, subnet, iptype, enable == 1) ? 0 : -1; });
}

int DHCPTagConfSetConfig(const char* ifname, unsigned subnet, int iptype,
                         const DHCP_SUBNET_CONF* conf) {
  return Boundary(-1, [&]() -> int { return SetConfig(ifname, subnet, iptype, conf) ? 0 : -1; });
}

int DHCPTagConfSet(const char* ifname, unsigned subnet, int iptype, const DHCP_SUBNET_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (IsRefusedName(ifname) || conf == nullptr || RefusesTexts(*conf)) {
      LOG_ERROR("%s:%d parameter error");
      return -1;
    }
    if (!SetEnabled(ifname, subnet, iptype, conf->enable == 1)) {
      LOG_ERROR("%s:%d Failed to set to dhcp server info file [%s].", ifname);
      return -1;
    }
    if (!SetConfig(ifname, subnet, iptype, conf)) {
      LOG_ERROR("%s:%d Failed to set config file of dhcp server [%s].", ifname);
      return -1;
    }
    return 0;
  });
}
