// SPDX-License-Identifier: Apache-2.0
// The IPv4 address of an interface: the one the kernel has, and the one that is configured.
#include <string>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

// Nothing when the file that would hold the address is not there.
std::optional<KeyValue> ReadConfigured(const std::string& ifname, std::size_t size) {
  const std::string path = dhcpd::IsDhcp(ifname) ? paths::DhcpInfo(ifname) : paths::Ifcfg(ifname);
  if (!Exists(path)) {
    LOG_ERROR("%s:%d config %s is not exsit, maybe create a new interface", path.c_str());
    return std::nullopt;
  }
  KeyValue address = ReadKey(path, keys::kIpAddr, size);
  if (address.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get [%s] from [%s], zarnerr=[0x%04X]", keys::kIpAddr, path.c_str(),
              KOPACErrGet());
  } else if (!address.Found()) {
    LOG_NOTE("%s:%d IP is not found");
  }
  return address;
}

}  // namespace

std::optional<std::string> ipv4::ConfiguredAddress(const std::string& ifname) {
  constexpr std::size_t kSize = 64;
  if (IsUnfitName(ifname.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
  auto address = ReadConfigured(ifname, kSize);
  if (!address) return "";
  if (address->Unreadable()) return std::nullopt;
  return std::move(address->text);
}

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
    const auto size = static_cast<std::size_t>(cbBuf);
    const auto address = ReadConfigured(szIfname, size);
    if (!address) return 0;
    CopyText(address->Found() ? address->text : "", szBuf, size);
    if (address->Unreadable()) return -1;
    return address->Found() ? 1 : 0;
  });
}
