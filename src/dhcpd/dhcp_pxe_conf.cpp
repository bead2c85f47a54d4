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

namespace {

constexpr char kSetting[] = "/etc/dhcpd/dhcpd-pxe-setting";
constexpr char kInfo[] = "/etc/dhcpd/dhcpd-pxe.info";
constexpr char kFragment[] = "/etc/dhcpd/dhcpd-pxe.conf";

constexpr char kRemoteKey[] = "is_remote_tftp";
constexpr char kLocalLoaderKey[] = "local_bootloader";
constexpr char kRemoteLoaderKey[] = "remote_bootloader";
constexpr char kServerKey[] = "remote_tftp_server_ip";

bool MakeFolderOrLog() {
  if (MakeFolder()) return true;
  LOG_ERROR("%s:%d Failed to mkdir [%s]", kFolder);
  return false;
}

// ---- read

// A key that is not there is no failure.
template <std::size_t N>
bool ReadField(const char* key, char (&field)[N]) {
  return KOPACFileGetKeyValue(kSetting, key, field, N, 0) >= 0;
}

template <std::size_t N>
bool ReadLoader(const char* key, char (&field)[N]) {
  if (ReadField(key, field)) return true;
  LOG_ERROR("%s:%d Failed to get [%s] key", key);
  return false;
}

bool ReadServer(DHCP_PXE_CONF* conf) {
  if (ReadField(kServerKey, conf->remote_tftp_server_ip)) return true;
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
  if (KOPACFileSetKeyValue(kSetting, key, std::string(value).c_str(), kQuotedLine) >= 0)
    return true;
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
  if (!MakeFolderOrLog() || !SetSettings(conf)) return -1;
  if (ReplaceFile(kFragment, FragmentText(conf))) return 0;
  LOG_ERROR("%s:%d Failed to open file [%s].", kFragment);
  return -1;
}

}  // namespace

int DHCPPXEConfGetEnable(int* enable) {
  return Boundary(-1, [&]() -> int {
    if (enable == nullptr) return -1;
    *enable = KeyIs(kSetting, kEnableKey, "yes") ? 1 : 0;
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
    static_cast<void>(DHCPPXEConfGetEnable(&conf->enable));
    if (!Exists(kSetting)) return 0;
    conf->is_remote_tftp = KeyIs(kSetting, kRemoteKey, "yes") ? 1 : 0;
    if (ReadLoader(kLocalLoaderKey, conf->local_bootloader) &&
        ReadLoader(kRemoteLoaderKey, conf->remote_bootloader) && ReadServer(conf)) {
      return 0;
    }
    LOG_ERROR("%s:%d Failed to get pxe config");
    return -1;
  });
}

int DHCPPXEConfSetEnable(int enable) {
  return Boundary(-1, [&]() -> int {
    if (!MakeFolderOrLog()) return -1;
    const char* const value = YesOrNo(enable == 1);
    for (const char* path : {kSetting, kInfo}) {
      if (KOPACFileSetKeyValue(path, kEnableKey, value, kQuotedLine) < 0) return -1;
    }
    return 0;
  });
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
    if (DHCPPXEConfSetEnable(conf->enable) < 0) {
      LOG_ERROR("%s:%d Failed to set info file of dhcp pxe server.");
      return -1;
    }
    if (conf->enable != 1) return 0;
    if (IsComplete(*conf)) return WriteFiles(*conf);
    LOG_ERROR("%s:%d Failed to set config file of dhcp pxe server.");
    return -1;
  });
}
