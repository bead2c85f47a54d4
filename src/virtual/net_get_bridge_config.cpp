// SPDX-License-Identifier: Apache-2.0
// The part in a bridge and the address settings that an interface's file gives it.
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

// A missing address or mask is reported under the primary port's key: the lines are known by that
// name.
template <std::size_t N>
void ReadAddress(const std::string& path, const char* key, char (&field)[N]) {
  if (!ReadKeyInto(path, key, field)) {
    LOG_ERROR("%s:%d Failed to get key[%s] in file[%s].", keys::kPrimary, path.c_str());
  }
}

void ReadSettings(const char* ifname, const std::string& path, ZARNNETIFSETTINGS* settings) {
  *settings = ZARNNETIFSETTINGS{};
  CopyText(ifname, settings->szName);
  settings->blOnBoot = KeyIs(path, keys::kOnBoot, "yes") ? 1 : 0;
  settings->blStatic = KeyIs(path, keys::kBootProto, model::kStatic) ? 1 : 0;
  if (settings->blStatic == 0) return;
  ReadAddress(path, keys::kIpAddr, settings->szIP);
  ReadAddress(path, keys::kNetmask, settings->szMask);
}

}  // namespace

int ZARNNetGetBridgeConfig(const char* szIfname, ZARNNETIFSETTINGS* pSettings,
                           ZARNBRIDGEINFO* pInfo) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname) || (pSettings == nullptr && pInfo == nullptr)) {
      LOG_ERROR("%s:%d Wrong Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const std::string path = paths::Ifcfg(szIfname);
    if (pInfo != nullptr) {
      const auto role = facts::ConfiguredBridgeRole(szIfname);
      if (!role) return -1;
      *pInfo = *role;
    } else if (!Exists(path)) {
      LOG_ERROR("%s:%d Failed to access [%s].", path.c_str());
      return Fail(ZARNNETERR_OPEN, -1);
    }
    if (pSettings != nullptr) ReadSettings(szIfname, path, pSettings);
    return 0;
  });
}
