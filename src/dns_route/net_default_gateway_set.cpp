// SPDX-License-Identifier: Apache-2.0
// The default gateway: as it is stored, and into the kernel.
#include <zarnnetsdk/dns_route.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

constexpr char kGatewayKey[] = "GATEWAY";

}  // namespace

int ZARNNetDefaultGatewayGetConf(char* szBuf, int cbBuf) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (szBuf == nullptr || cbBuf <= 0) {
      LOG_ERROR_FUNC(at, "%s (%d) Bad parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto size = static_cast<std::size_t>(cbBuf);
    const KeyValue gateway = ReadKey(paths::kNetwork, kGatewayKey, size);
    CopyText(gateway.text, szBuf, size);
    if (!gateway.Unreadable()) return 0;
    LOG_ERROR_FUNC(at, "%s(%d) Failed to get default gateway.");
    return -1;
  });
}

int ZARNNetDefaultGatewaySetConf(const char* szGateway) {
  return Boundary(-1, [&]() -> int {
    if (!IsEmpty(szGateway) && IsUnfitAddress(szGateway)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const bool stored = IsEmpty(szGateway) ? DropKey(paths::kNetwork, kGatewayKey)
                                           : SetKey(paths::kNetwork, kGatewayKey, szGateway);
    return stored ? 0 : -1;
  });
}

int ZARNNetDefaultGatewaySet(const char* szGateway) {
  return Boundary(-1, [&]() -> int {
    if (!IsEmpty(szGateway) && IsUnfitAddress(szGateway)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    // Without a default route there is none to delete.
    static_cast<void>(RunStatus(paths::kRoute, "delete", "default"));
    if (IsEmpty(szGateway)) return 0;
    const int status = RunStatus(paths::kRoute, "add", "default", "gw", szGateway);
    if (status == 0) return 0;
    LOG_ERROR("%s:%d failed to set default gateway %s (%d).", szGateway, status);
    return Fail(ZARNNETERR_COMMAND, -1);
  });
}
