// SPDX-License-Identifier: Apache-2.0
// Stores the settings of the tunnel: the password in a file of its own, enciphered, the rest in the
// interface's file. Only what differs from what is there is written.
#include <zarncore/zarncore.h>
#include <zarnnetsdk/tunnel.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "frame/os/rewrite.h"
#include "tunnel/settings.h"

using namespace frame;
using namespace tunnel;

namespace {

constexpr std::size_t kEncipheredSize = 64;

template <std::size_t N>
bool Same(const char (&a)[N], const char (&b)[N]) {
  return FieldText(a) == FieldText(b);
}

// The user id and the password that no anonymous record shows lie in their files all the same: a
// login that is chosen now would find them there.
void ShowLogin(ZARNTUNNELCONF* stored) {
  if (stored->blAnonymous == 0) return;
  ReadKeyInto(paths::Ifcfg(kIfname), kUserId, stored->szUserId);
  ReadPassword(stored);
}

// The file is opened when there is something to write, and not before.
bool WritePassword(const char (&password)[sizeof ZARNTUNNELCONF::szPassword]) {
  const std::string_view text = FieldText(password);
  if (!HasEnd(password)) {  // nobody knows how long it is, and no record could hold it again
    SetError(ZARNNETERR_BAD_PARAMETER);
    LOG_ERROR_PLAIN("%s %s(%d): lenPassword is not enough!!", "TunnelPasswdSet", Place().source,
                    __LINE__);
    return false;
  }
  char enciphered[kEncipheredSize] = "";
  if (KOPACCryptBufCrypt(text.data(), text.size(), enciphered, sizeof enciphered) < 0) return false;
  Rewrite file(paths::kTunnelPassword);
  if (!file.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  if (!file.Fill({enciphered, sizeof enciphered})) {
    LOG_ERROR("%s:%d failed to save tunnel password");
    return Fail(ZARNNETERR_WRITE, false);
  }
  return file.TakeEffect() || Fail(ZARNNETERR_RENAME, false);
}

int WriteSettings(const ZARNTUNNELCONF& conf, const ZARNTUNNELCONF& stored) {
  const bool sameLogin = (conf.blAnonymous != 0) == (stored.blAnonymous != 0);
  const bool sameServer = *conf.szServer == '\0' || Same(conf.szServer, stored.szServer);
  const bool sameUser = Same(conf.szUserId, stored.szUserId);
  if (sameLogin && sameServer && sameUser) return 0;
  KeyEdit edit;
  if (!sameLogin) edit.Set(kLogin, conf.blAnonymous != 0 ? kAnonymous : kWithLogin);
  if (!sameServer) edit.Set(kServer, conf.szServer);
  if (!sameUser) edit.Set(kUserId, conf.szUserId);
  if (edit.WriteTo(paths::Ifcfg(kIfname))) return 0;
  LOG_ERROR("%s:%d failed to write configs");
  return -1;
}

int Store(const ZARNTUNNELCONF& conf, const ZARNTUNNELCONF& present) {
  ZARNTUNNELCONF known = present;
  if (conf.blAnonymous == 0) {
    ShowLogin(&known);
    if (!Same(conf.szPassword, known.szPassword) && !WritePassword(conf.szPassword)) {
      LOG_ERROR("%s:%d failed to set passwd");
      return -1;
    }
  }
  return WriteSettings(conf, known);
}

}  // namespace

// Two callers at once never leave the user of one with the password of the other.
int ZARNTunnelConfigSet(const ZARNTUNNELCONF* pConf) {
  return Boundary(
      -1,
      [&]() -> int {
        if (pConf == nullptr || !IsFit(*pConf)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
        const FileLock lock(paths::kTunnelPassword);
        if (!lock.Held()) {
          LOG_ERROR("%s:%d KOPACFileLockTimeByFile failed!");
          return Fail(ZARNNETERR_LOCK, -1);
        }
        const auto present = ReadStored();
        if (!present) {
          LOG_ERROR("%s:%d failed to get Tunnel Config");
          return -1;
        }
        return Store(*pConf, *present);
      },
      [&] { LOG_ERROR("%s:%d failed to alloc hash"); });
}
