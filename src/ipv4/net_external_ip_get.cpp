// SPDX-License-Identifier: Apache-2.0
// The appliance's address as seen from the internet, worked out by the dynamic-DNS daemon.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"

using namespace frame;

char* ZARNExternalIPGet(void) {
  return Boundary(nullptr, [&](const Place& at) -> char* {
    constexpr std::size_t kSize = 16;
    if (const int status = RunStatus(paths::kDdnsd, "-e"); status != 0) {
      LOG_ERROR("%s:%d Failed to get external IP by /usr/zarn/sbin/ddnsd, err=%d", status);
      return Fail(ZARNNETERR_COMMAND, nullptr);
    }
    std::unique_ptr<char, decltype(&std::free)> ip(static_cast<char*>(std::calloc(1, kSize)),
                                                   &std::free);
    if (!ip) {
      LOG_ERROR_PLAIN("(%s:%d:%s)failed to allocate space for parsing IP, errno=%s", Place().source,
                      __LINE__, at.function, std::strerror(errno));
      return Fail(ZARNNETERR_NO_MEMORY, nullptr);
    }
    const KeyValue address = ReadKey(paths::kExternalIpResult, "externalIP", kSize);
    if (!address.Found()) {
      LOG_ERROR_FUNC(
          at, "%s(%d) Failed to get external IP from /run/ddns/externalIP.result, zarn_errno=[%X]",
          KOPACErrGet());
      if (address.Unreadable()) return nullptr;
      return Fail(ZARNNETERR_UNEXPECTED_CONTENT, nullptr);
    }
    CopyText(address.text, ip.get(), kSize);
    return ip.release();
  });
}
