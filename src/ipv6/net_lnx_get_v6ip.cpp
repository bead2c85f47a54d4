// The IPv6 addresses that the kernel has on an interface.
#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

constexpr std::size_t kHexDigits = 32;
constexpr std::size_t kFieldsAt = 36;  // behind the address, the interface index and their blanks

// "fe80000000000000..." as compressed text.
void CopyAddress(std::string_view hex, ZARNNETV6ADDR* record) {
  std::string groups;
  for (std::size_t i = 0; i < kHexDigits; i += 4) {
    if (i != 0) groups += ':';
    groups += hex.substr(i, 4);
  }
  in6_addr address{};
  if (::inet_pton(AF_INET6, groups.c_str(), &address) != 1) LOG_ERROR("%s:%d inet_pton failed. %m");
  ::inet_ntop(AF_INET6, &address, record->szAddr, sizeof record->szAddr);
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

int ZARNLnxV6IPGet(const char* szIfname, ZARNNETV6ADDR* rgAddr, int cAddr) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || rgAddr == nullptr || cAddr <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    std::fill_n(rgAddr, cAddr, ZARNNETV6ADDR{});
    LineReader lines(paths::kProcIfInet6);
    if (!lines.IsOpen()) {
      const int error = errno;
      SetError(ZARNNETERR_OPEN);
      errno = error;
      LOG_ERROR("%s:%d Fail to open [%s], errno=[%d/%m]", paths::kProcIfInet6, error);
      return -1;
    }
    int count = 0;
    while (const auto line = lines.Next()) {
      ZARNNETV6ADDR record{};
      if (ParseLine(std::string(*line), &record) != szIfname) continue;
      if (count < cAddr) rgAddr[count] = record;
      ++count;
    }
    return count;
  });
}
