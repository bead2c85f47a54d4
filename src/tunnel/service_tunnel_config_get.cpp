// SPDX-License-Identifier: Apache-2.0
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
  return ReadOptionalKeyInto(paths::Ifcfg(kIfname), key, field);
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

std::optional<int> RunState() {
  int state = 0;
  return KOPAServicecfgRunKeyGet(kService, &state) < 0 ? std::nullopt : std::optional(state);
}

// Is the service enabled? Nothing, with a code, for a state that is neither.
std::optional<bool> IsEnabled(int runState) {
  if (runState == kEnabled || runState == kDisabled) return runState == kEnabled;
  return Fail(ZARNNETERR_UNEXPECTED_CONTENT, std::optional<bool>());
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

std::optional<ZARNTUNNELCONF> tunnel::ReadStored() {
  const auto state = RunState();
  ZARNTUNNELCONF conf{};
  if (!state || !ReadSettings(&conf) || !IsEnabled(*state)) return std::nullopt;
  return conf;
}

int ZARNTunnelConfigGet(ZARNTUNNELCONF* pConf) {
  return Boundary(-1, [&]() -> int {
    if (pConf == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto state = RunState();
    if (!state) return -1;
    *pConf = {};
    if (!ReadSettings(pConf)) {
      *pConf = {};
      return -1;
    }
    const auto enabled = IsEnabled(*state);
    if (!enabled) return -1;
    return *enabled ? 1 : 0;
  });
}
