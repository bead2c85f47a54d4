// SPDX-License-Identifier: Apache-2.0
// Stores the relay settings of one interface. Every name in the folder is taken for an interface by
// whoever lists it, so the new content is made beside the folder and then takes the file's place.
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "frame/os/rewrite.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

// The present content, with its mode and owner, in the temporary file; synced, for an edit that
// changes nothing writes nothing.
bool CopyInto(const std::string& path, Rewrite* copy) {
  constexpr mode_t kMode = 0644;
  LineReader lines(path);
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  std::string content;
  while (const auto line = lines.Next())
    content.append(*line);
  if (lines.Failed()) return Fail(ZARNNETERR_READ, false);
  if (!copy->IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  return (copy->SetModeOfTarget(kMode) && copy->Fill(content)) || Fail(ZARNNETERR_WRITE, false);
}

bool Store(const KeyEdit& edit, const std::string& path) {
  const FileLock lock(path);
  if (!lock.Held()) {
    LOG_ERROR("%s:%d KOPACFileLockTimeByFile failed!");
    return Fail(ZARNNETERR_LOCK, false);
  }
  const std::string name = path.substr(path.rfind('/') + 1);
  Rewrite copy(path, Rewrite::Temporary{paths::PppoeRelayTemporary(name)});
  if (!CopyInto(path, &copy) || !edit.WriteTo(copy.TemporaryName())) return false;
  return copy.TakeEffect() || Fail(ZARNNETERR_RENAME, false);
}

bool CanBeServer(const PPPOE_RELAY_CONF& conf) {
  const std::string_view server = FieldText(conf.server);
  return server.size() < sizeof conf.server && (server.empty() || !IsUnfitName(conf.server));
}

}  // namespace

int ZARNNetSetPPPoERelayConfig(const char* ifname, const PPPOE_RELAY_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (conf == nullptr || !pppoe::CanHaveSettings(ifname) || !CanBeServer(*conf)) {
      LOG_ERROR("%s:%d Wrong Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const std::string path = pppoe::RelayFile(ifname);
    if (!pppoe::MakeRelayFile(path)) return -1;
    KeyEdit edit;
    edit.Set(pppoe::kEnable, conf->enable == 1 ? pppoe::kYes : pppoe::kNo);
    edit.Set(pppoe::kServer, conf->server);
    return Store(edit, path) ? 0 : -1;
  });
}
