// The default gateway: as it is stored, and into the kernel.
#include <zarnnetsdk/dns_route.h>

#include "frame/command.h"
#include "frame/key_file.h"
#include "frame/log.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

namespace {

constexpr char kGatewayKey[] = "GATEWAY";

}  // namespace

int ZARNNetDefaultGatewayGetConf(char* szBuf, int cbBuf) try {
  if (szBuf == nullptr || cbBuf <= 0) {
    LOG_ERROR_FUNC("%s (%d) Bad parameter.");
    return FRAME_FAIL(kBadParameter, -1);
  }
  const auto size = static_cast<std::size_t>(cbBuf);
  CopyText("", szBuf, size);
  if (KOPACFileGetKeyValue(paths::kNetwork, kGatewayKey, szBuf, size, 0) >= 0) return 0;
  LOG_ERROR_FUNC("%s(%d) Failed to get default gateway.");
  return -1;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetDefaultGatewaySetConf(const char* szGateway) try {
  const int result = IsEmpty(szGateway)
                         ? KOPACFileRemoveKey(paths::kNetwork, kGatewayKey)
                         : KOPACFileSetKeyValue(paths::kNetwork, kGatewayKey, szGateway, kBareLine);
  return result < 0 ? -1 : 0;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetDefaultGatewaySet(const char* szGateway) try {
  // Without a default route there is none to delete.
  static_cast<void>(RunStatus(paths::kRoute, "delete", "default"));
  if (IsEmpty(szGateway)) return 0;
  const int status = RunStatus(paths::kRoute, "add", "default", "gw", szGateway);
  if (status == 0) return 0;
  LOG_ERROR("%s:%d failed to set default gateway %s (%d).", szGateway, status);
  return FRAME_FAIL(kCommand, -1);
}
FRAME_NO_EXCEPTIONS(-1)
