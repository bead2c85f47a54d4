// SPDX-License-Identifier: Apache-2.0
// Writes the part in a bridge, and the address settings, into an interface's file.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

bool SetRole(uint32_t type, const char* reference, KeyEdit* edit) {
  switch (type) {
    case ZARNBRIDGE_STANDALONE:
      edit->Drop(keys::kType).Drop(keys::kPrimary).Drop(keys::kBridge);
      break;
    case ZARNBRIDGE_BRIDGE:
    case ZARNBRIDGE_LOCAL_LAN:
      edit->Set(keys::kType, "bridge").Set(keys::kPrimary, reference);
      edit->Drop(keys::kBridge);
      break;
    case ZARNBRIDGE_PORT:
      edit->Set(keys::kBridge, reference).Drop(keys::kType).Drop(keys::kPrimary);
      break;
    default:
      return false;
  }
  if (type == ZARNBRIDGE_LOCAL_LAN) {
    edit->Set(keys::kLocalLan, "yes");
  } else {
    edit->Drop(keys::kLocalLan);
  }
  return true;
}

bool IsFitReference(const std::string& reference) {
  return reference.empty() || !IsUnfitName(reference.c_str());
}

}  // namespace

int ZARNNetSetBridgeConfig(const ZARNNETIFSETTINGS* pSettings, const ZARNBRIDGEINFO* pInfo) {
  return Boundary(-1, [&]() -> int {
    const std::string ifname(pInfo != nullptr ? FieldText(pInfo->szName) : "");
    const std::string reference(pInfo != nullptr ? FieldText(pInfo->szRef) : "");
    if (pInfo == nullptr || IsUnfitName(ifname.c_str()) || !IsFitReference(reference) ||
        (pSettings != nullptr && !model::IsFitAddress(*pSettings))) {
      LOG_ERROR("%s:%d Wrong Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    KeyEdit edit;
    edit.Set(keys::kDevice, ifname.c_str());
    if (!SetRole(pInfo->type, reference.c_str(), &edit)) {
      LOG_ERROR("%s:%d Failed to set bridge config with wrong type.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (pSettings != nullptr) {
      edit.Set(keys::kOnBoot, pSettings->blOnBoot != 0 ? "yes" : "no");
      model::SetAddress(*pSettings, &edit);
    }
    const std::string path = paths::Ifcfg(ifname);
    if (Exists(path)) model::KeepSaved(path);
    return edit.WriteTo(path) ? 0 : -1;
  });
}
