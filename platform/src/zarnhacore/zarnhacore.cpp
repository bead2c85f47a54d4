// High availability, answered from the key file /etc/zarnha.conf. An appliance without the file has
// none.
//   active, running, has_if   "yes" or "no"
//   heartbeat_if              name of the heartbeat interface
//   <ifname>_mac, <ifname>_ip, <ifname>_mask   what the pair shares on an interface
#include <cstdio>
#include <string>

#include <zarncore/zarncore.h>
#include <zarnhacore/zarnhacore.h>

namespace {

constexpr char kConf[] = "/etc/zarnha.conf";

int IsYes(const char* key) {
  return KOPACFileCheckKeyValue(kConf, key, "yes", 0) == 1 ? 1 : 0;
}

bool Read(const std::string& key, char* buffer, int size) {
  return buffer != nullptr && size > 0 &&
         KOPACFileGetKeyValue(kConf, key.c_str(), buffer, static_cast<size_t>(size), 0) > 0;
}

}  // namespace

int ZARNHAIsActive(void) {
  return IsYes("active");
}

int ZARNHAIsRunning(void) {
  return IsYes("running");
}

int ZARNHAHasHAIF(void) {
  return IsYes("has_if");
}

int ZARNHAGetMac(const char* szIfname, char* szBuf, int cbBuf) try {
  return szIfname != nullptr && Read(std::string(szIfname) + "_mac", szBuf, cbBuf) ? 0 : -1;
} catch (...) {
  return -1;
}

int ZARNHAGetHeartbeatIF(char* szBuf, int cbBuf) try {
  return Read("heartbeat_if", szBuf, cbBuf) ? 0 : -1;
} catch (...) {
  return -1;
}

int ZARNHAGetRelatedIFInfo(const char* szIfname, ZARNNETIFADDR* pInfo) try {
  if (szIfname == nullptr || pInfo == nullptr) return -1;
  const std::string name(szIfname);
  ZARNNETIFADDR info = *pInfo;
  if (!Read(name + "_ip", info.szIP, sizeof info.szIP) ||
      !Read(name + "_mask", info.szMask, sizeof info.szMask)) {
    return -1;
  }
  std::snprintf(info.szName, sizeof info.szName, "%s", szIfname);
  *pInfo = info;
  return 0;
} catch (...) {
  return -1;
}
