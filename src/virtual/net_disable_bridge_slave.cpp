// SPDX-License-Identifier: Apache-2.0
// Makes a port of a bridge an interface of its own again, in its file.
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"

using namespace frame;

int ZARNNetDisableBridgeSlave(const ZARNNETIFSETTINGS* pSettings) {
  return Boundary(-1, [&]() -> int {
    if (pSettings == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string ifname(FieldText(pSettings->szName));
    if (IsUnfitName(ifname.c_str()) || !model::IsFitAddress(*pSettings)) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    KeyEdit edit;
    edit.Set(keys::kDevice, ifname.c_str()).Set(keys::kOnBoot, "yes");
    model::SetAddress(*pSettings, &edit);
    edit.Drop(keys::kBridge).Drop(keys::kType);
    const std::string path = paths::Ifcfg(ifname);
    model::KeepSaved(path);
    return edit.WriteTo(path) ? 0 : -1;
  });
}
