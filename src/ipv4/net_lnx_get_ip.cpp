// The IPv4 address of an interface: the one the kernel has, and the one that is configured.
#include <string>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"

using namespace frame;

int ZARNILnxGetIP(const char* szIfname, char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || szBuf == nullptr || cbBuf <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto address = facts::KernelAddress(szIfname);
    CopyText(DottedText(address.value_or(in_addr{})), szBuf, static_cast<std::size_t>(cbBuf));
    return address ? 1 : 0;
  });
}

int ZARNILnxGetIPFromCfg(const char* szIfname, char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname) || szBuf == nullptr || cbBuf <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path =
        BlZARNLnxIsDHCP(szIfname) == 1 ? paths::DhcpInfo(szIfname) : paths::Ifcfg(szIfname);
    if (!Exists(path)) {
      LOG_ERROR("%s:%d config %s is not exsit, maybe create a new interface", path.c_str());
      return 0;
    }
    const int length = KOPACFileGetKeyValue(path.c_str(), keys::kIpAddr, szBuf,
                                            static_cast<std::size_t>(cbBuf), 0);
    if (length > 0) return 1;
    *szBuf = '\0';
    if (length < 0) {
      LOG_ERROR("%s:%d Failed to get [%s] from [%s], zarnerr=[0x%04X]", keys::kIpAddr, path.c_str(),
                KOPACErrGet());
      return -1;
    }
    LOG_NOTE("%s:%d IP is not found");
    return 0;
  });
}
