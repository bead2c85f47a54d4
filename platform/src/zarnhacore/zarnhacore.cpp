// SPDX-License-Identifier: Apache-2.0
// High availability, answered from the key file /etc/zarnha.conf. An appliance without the file has
// none.
//   active, running, has_if   "yes" or "no"
//   heartbeat_if              name of the heartbeat interface
//   <ifname>_mac, <ifname>_ip, <ifname>_mask   what the pair shares on an interface
#include <string>

#include <zarncore/zarncore.h>
#include <zarnhacore/zarnhacore.h>

#include "common/error.h"
#include "common/settings.h"
#include "common/text.h"

using platform::Code;
using platform::Fail;

namespace {

constexpr char kConf[] = "/etc/zarnha.conf";

// What is not known is absent and sets no error.
bool IsKnown(const std::string& key, char* buffer, int size) {
  *buffer = '\0';
  return KOPACFileExist(kConf) == 1 &&
         KOPACFileGetKeyValue(kConf, key.c_str(), buffer, static_cast<std::size_t>(size), 0) > 0;
}

}  // namespace

int ZARNHAIsActive(void) {
  return platform::IsYes(kConf, "active") ? 1 : 0;
}

int ZARNHAIsRunning(void) {
  return platform::IsYes(kConf, "running") ? 1 : 0;
}

int ZARNHAHasHAIF(void) {
  return platform::IsYes(kConf, "has_if") ? 1 : 0;
}

int ZARNHAGetMac(const char* szIfname, char* szBuf, int cbBuf) try {
  if (szIfname == nullptr || szBuf == nullptr || cbBuf <= 0) return Fail(Code::kArgument);
  return IsKnown(std::string(szIfname) + "_mac", szBuf, cbBuf) ? 0 : -1;
} catch (...) {
  return Fail(Code::kMemory);
}

int ZARNHAGetHeartbeatIF(char* szBuf, int cbBuf) try {
  if (szBuf == nullptr || cbBuf <= 0) return Fail(Code::kArgument);
  return IsKnown("heartbeat_if", szBuf, cbBuf) ? 0 : -1;
} catch (...) {
  return Fail(Code::kMemory);
}

int ZARNHAGetRelatedIFInfo(const char* szIfname, ZARNNETIFADDR* pInfo) try {
  if (szIfname == nullptr || pInfo == nullptr) return Fail(Code::kArgument);
  const std::string name(szIfname);
  ZARNNETIFADDR info = *pInfo;
  if (!IsKnown(name + "_ip", info.szIP, sizeof info.szIP) ||
      !IsKnown(name + "_mask", info.szMask, sizeof info.szMask)) {
    return -1;
  }
  platform::CopyCut(name, info.szName, sizeof info.szName);
  *pInfo = info;
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}
