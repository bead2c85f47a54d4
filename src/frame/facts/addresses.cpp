// SPDX-License-Identifier: Apache-2.0
// The addresses that the kernel has on an interface.
#include "frame/facts/addresses.h"

#include <cerrno>
#include <cstdio>

#include "frame/base/address.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"

namespace frame::facts {
namespace {

// Lines about IPv6 addresses are known by the name of the function that lists them.
constexpr char kSource[] = "net_lnx_get_v6ip";
constexpr std::size_t kHexDigits = 32;
constexpr std::size_t kFieldsAt = 36;  // behind the address, the interface index and their blanks

// "fe80000000000000..." as compressed text.
void CopyAddress(std::string_view hex, ZARNNETV6ADDR* record) {
  const auto address = ParseHexIpv6(hex);
  if (!address) LOG_ERROR_AT(Place(kSource), "%s:%d inet_pton failed. %m");
  CopyText(Ipv6Text(address.value_or(Ipv6{})), record->szAddr);
}

// Fills the record from a line of the kernel's list and tells whose address it is.
std::string ParseLine(const std::string& line, ZARNNETV6ADDR* record) {
  char ifname[17] = "";
  if (line.size() <= kFieldsAt) return {};
  if (std::sscanf(line.c_str() + kFieldsAt, "%x %x %x %16s", &record->prefix, &record->scope,
                  &record->flags, ifname) != 4) {
    return {};
  }
  CopyAddress(std::string_view(line).substr(0, kHexDigits), record);
  return ifname;
}

}  // namespace

std::optional<in_addr> KernelAddress(std::string_view ifname) {
  const auto address = InetSocket().Address(ifname);
  if (!address) LOG_NOTE_AT(Place("net_lnx_get_ip"), "%s:%d get ip failed");
  return address;
}

std::optional<std::vector<ZARNNETV6ADDR>> KernelV6Addresses(std::string_view ifname) {
  LineReader lines(paths::kProcIfInet6);
  if (!lines.IsOpen()) {
    const int error = errno;
    SetError(ZARNNETERR_OPEN, Place(kSource));
    errno = error;
    LOG_ERROR_AT(Place(kSource), "%s:%d Fail to open [%s], errno=[%d/%m]", paths::kProcIfInet6,
                 error);
    return std::nullopt;
  }
  std::vector<ZARNNETV6ADDR> addresses;
  while (const auto line = lines.Next()) {
    ZARNNETV6ADDR record{};
    if (ParseLine(std::string(*line), &record) == ifname) addresses.push_back(record);
  }
  return addresses;
}

}  // namespace frame::facts
