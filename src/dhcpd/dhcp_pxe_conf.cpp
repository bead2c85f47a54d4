// SPDX-License-Identifier: Apache-2.0
// Network boot: which boot loader clients are told to fetch, and from where.
#include <string>

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

constexpr char kRemoteKey[] = "is_remote_tftp";
constexpr char kLocalLoaderKey[] = "local_bootloader";
constexpr char kRemoteLoaderKey[] = "remote_bootloader";
constexpr char kServerKey[] = "remote_tftp_server_ip";

// ---- read

// A key that is not there is no failure.
template <std::size_t N>
bool ReadLoader(const char* key, char (&field)[N]) {
  if (ReadOptionalKeyInto(kPxeSetting, key, field)) return true;
  LOG_ERROR("%s:%d Failed to get [%s] key", key);
  return false;
}

bool ReadServer(DHCP_PXE_CONF* conf) {
  if (ReadOptionalKeyInto(kPxeSetting, kServerKey, conf->remote_tftp_server_ip)) return true;
  LOG_ERROR("%s:%d Failed to get remote tftp server IP");
  return false;
}

// ---- written

bool RefusesTexts(const DHCP_PXE_CONF& conf) {
  return RefusesText(FieldText(conf.local_bootloader)) ||
         RefusesText(FieldText(conf.remote_bootloader)) ||
         RefusesText(FieldText(conf.remote_tftp_server_ip));
}

bool IsComplete(const DHCP_PXE_CONF& conf) {
  if (conf.is_remote_tftp == 0) {
    if (!FieldText(conf.local_bootloader).empty()) return true;
    LOG_ERROR("%s:%d input error when set PXE config: empty local bootloader");
    return false;
  }
  if (FieldText(conf.remote_bootloader).empty()) {
    LOG_ERROR("%s:%d input error when set PXE config: empty remote bootloader");
    return false;
  }
  if (!FieldText(conf.remote_tftp_server_ip).empty()) return true;
  LOG_ERROR("%s:%d input error when set PXE config: empty remote tftp ip");
  return false;
}

bool SetSetting(const char* key, std::string_view value) {
  if (SetKey(kPxeSetting, key, std::string(value).c_str(), kQuotedLine)) return true;
  LOG_ERROR("%s:%d Failed to set [%s] key", key);
  return false;
}

// The keys of the other side stay as they were.
bool SetSettings(const DHCP_PXE_CONF& conf) {
  const bool remote = conf.is_remote_tftp != 0;
  if (!SetSetting(kRemoteKey, YesOrNo(remote))) return false;
  if (!remote) return SetSetting(kLocalLoaderKey, FieldText(conf.local_bootloader));
  return SetSetting(kRemoteLoaderKey, FieldText(conf.remote_bootloader)) &&
         SetSetting(kServerKey, FieldText(conf.remote_tftp_server_ip));
}

std::string FragmentText(const DHCP_PXE_CONF& conf) {
  std::string text = "dhcp-boot=tag:pxe,";
  if (conf.is_remote_tftp != 0) {
    text.append(FieldText(conf.remote_bootloader)).append(",bootserver,");
    text.append(FieldText(conf.remote_tftp_server_ip));
  } else {
    text.append(FieldText(conf.local_bootloader));
  }
  return text.append("\ndhcp-vendorclass=set:pxe,PXEClient\n");
}

int WriteFiles(const DHCP_PXE_CONF& conf) {
  const bool written =
      MakeFolderOrLog() && SetSettings(conf) && WriteFragmentOrLog(kPxeConf, FragmentText(conf));
  return written ? 0 : -1;
}

bool Enable(bool enable) {
  if (!MakeFolderOrLog()) return false;
  for (const char* path : {kPxeSetting, kPxeInfo}) {
    if (!SetKey(path, kEnable, YesOrNo(enable), kQuotedLine)) return false;
  }
  return true;
}

}  // namespace

int DHCPPXEConfGetEnable(int* enable) {
  return Boundary(-1, [&]() -> int {
    if (enable == nullptr) return -1;
    *enable = IsSwitchedOn(kPxeSetting) ? 1 : 0;
    return 0;
  });
}

int DHCPPXEConfGet(DHCP_PXE_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (conf == nullptr) {
      LOG_ERROR("%s:%d DHCPPXEConfGet() cannot store to NULL structure");
      return -1;
    }
    *conf = {};
    conf->enable = IsSwitchedOn(kPxeSetting) ? 1 : 0;
    if (!Exists(kPxeSetting)) return 0;
    conf->is_remote_tftp = KeyIs(kPxeSetting, kRemoteKey, kYes) ? 1 : 0;
    if (ReadLoader(kLocalLoaderKey, conf->local_bootloader) &&
        ReadLoader(kRemoteLoaderKey, conf->remote_bootloader) && ReadServer(conf)) {
      return 0;
    }
    LOG_ERROR("%s:%d Failed to get pxe config");
    return -1;
  });
}

int DHCPPXEConfSetEnable(int enable) {
  return Boundary(-1, [&]() -> int { return Enable(enable == 1) ? 0 : -1; });
}

int DHCPPXEConfSet(const DHCP_PXE_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (conf == nullptr) {
      LOG_ERROR("%s:%d no interface parameter");
      return -1;
    }
    if (RefusesTexts(*conf)) {
      LOG_ERROR("%s:%d Failed to set config file of dhcp pxe server.");
      return -1;
    }
    if (!Enable(conf->enable == 1)) {
      LOG_ERROR("%s:%d Failed to set info file of dhcp pxe server.");
      return -1;
    }
    if (conf->enable != 1) return 0;
    if (IsComplete(*conf)) return WriteFiles(*conf);
    LOG_ERROR("%s:%d Failed to set config file of dhcp pxe server.");
    return -1;
  });
}
