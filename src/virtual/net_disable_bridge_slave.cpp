// Makes a port of a bridge an interface of its own again, in its file.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/error.h"
#include "frame/ifcfg_keys.h"
#include "frame/key_file.h"
#include "frame/paths.h"
#include "frame/text.h"
#include "virtual/roles.h"
#include "virtual/settings_keys.h"

using namespace frame;

int ZARNNetDisableBridgeSlave(const ZARNNETIFSETTINGS* pSettings) try {
  const std::string ifname(pSettings != nullptr ? FieldText(pSettings->szName) : "");
  if (IsUnfitName(ifname.c_str()) || !virtual_if::IsFit(*pSettings)) {
    return FRAME_FAIL(kBadParameter, -1);
  }
  KeyEdit edit;
  edit.Set(keys::kDevice, ifname.c_str()).Set(keys::kOnBoot, "yes");
  virtual_if::SetAddress(*pSettings, &edit);
  edit.Drop(bridge::kBridgeKey).Drop(bridge::kTypeKey);
  const std::string path = paths::Ifcfg(ifname);
  virtual_if::KeepCopy(path);
  return edit.WriteTo(path) ? 0 : -1;
}
FRAME_NO_EXCEPTIONS(-1)
