// The stored settings of the tunnel, and whether its service is enabled.
#include <cstring>
#include <optional>
#include <string>
#include <strings.h>

#include <zarncore/zarncore.h>
#include <zarnnetsdk/tunnel.h>
#include <zarnsdk/zarnsdk.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "tunnel/settings.h"

using namespace frame;
using namespace tunnel;

namespace {

constexpr int kEnabled = 1;
constexpr int kDisabled = 2;

template <std::size_t N>
bool ReadText(const char* key, char (&field)[N]) {
  return KOPACFileGetKeyValue(paths::Ifcfg(kIfname).c_str(), key, field, N, 0) >= 0;
}

// "anonymous" in any case, or nothing, is anonymous; every other text asks for a login.
std::optional<bool> ReadIsAnonymous() {
  char login[32] = "";
  if (!ReadText(kLogin, login)) return std::nullopt;
  return *login == '\0' || ::strcasecmp(login, kAnonymous) == 0;
}

bool ReadSettings(ZARNTUNNELCONF* conf) {
  if (!ReadText(kServer, conf->szServer)) return false;
  const auto anonymous = ReadIsAnonymous();
  if (!anonymous) return false;
  conf->blAnonymous = *anonymous ? 1 : 0;
  if (*anonymous) return true;
  if (!ReadText(kUserId, conf->szUserId)) return false;
  ReadPassword(conf);
  return true;
}

// The enciphered text of the file, which is padded with zeros.
std::string ReadEnciphered() {
  char text[64] = "";
  const File file = OpenFile(paths::kTunnelPassword, "r");
  if (!file) return {};
  if (std::fread(text, 1, sizeof text - 1, file.get()) == 0) {
    LOG_NOTE("%s:%d file %s is empty", paths::kTunnelPassword);
  }
  return text;
}

}  // namespace

void tunnel::ReadPassword(ZARNTUNNELCONF* conf) {
  char(&password)[sizeof conf->szPassword] = conf->szPassword;
  std::memset(password, 0, sizeof password);
  const std::string enciphered = ReadEnciphered();
  if (enciphered.size() >= sizeof password) {
    LOG_ERROR_PLAIN("%s %s(%d): lenPasswdEnc is not enough!!", "TunnelPasswdGet", Place().source,
                    __LINE__);
    return;
  }
  if (enciphered.empty()) return;
  if (KOPACCryptBufCrypt(enciphered.data(), enciphered.size(), password, sizeof password) < 0) {
    std::memset(password, 0, sizeof password);
  }
}

int ZARNTunnelConfigGet(ZARNTUNNELCONF* pConf) {
  return Boundary(-1, [&]() -> int {
    int runState = 0;
    if (pConf == nullptr || KOPAServicecfgRunKeyGet(kService, &runState) < 0) return -1;
    *pConf = {};
    if (!ReadSettings(pConf)) {
      *pConf = {};
      return -1;
    }
    if (runState == kEnabled) return 1;
    return runState == kDisabled ? 0 : -1;
  });
}
