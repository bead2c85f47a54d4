// SPDX-License-Identifier: Apache-2.0
// The short host name, as the kernel has it.
#include <cerrno>
#include <string_view>
#include <unistd.h>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/lock.h"

using namespace frame;

int ZARNLnxGetHostname(char* szBuf) {
  return Boundary(-1, [&]() -> int {
    constexpr std::size_t kSize = 64;
    if (szBuf == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const Lock lock(kNetworkRead);
    if (!lock.Held()) return Fail(ZARNNETERR_LOCK, -1);
    char name[kSize] = "";
    errno = 0;
    const int result = ::gethostname(name, sizeof name);
    const bool cut = errno == ENAMETOOLONG;  // a C library may cut the name and call it a success
    name[kSize - 1] = '\0';
    if (result != 0 || cut) return Fail(ZARNNETERR_REFUSED, -1);
    const std::string_view full(name);
    const std::string_view shortName = full.substr(0, full.find('.'));
    CopyText(shortName, szBuf, kSize);
    return shortName.empty() ? 0 : 1;
  });
}
