// Address settings on their way into an interface file.
#include "virtual/settings_keys.h"

#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

bool virtual_if::IsFit(const ZARNNETIFSETTINGS& settings) {
  if (settings.blStatic == 0) return true;
  const std::string ip(FieldText(settings.szIP));
  const std::string mask(FieldText(settings.szMask));
  return !IsUnfitName(ip.c_str()) && !IsUnfitName(mask.c_str());
}

void virtual_if::SetAddress(const ZARNNETIFSETTINGS& settings, KeyEdit* edit) {
  if (settings.blStatic == 0) {
    edit->Set(keys::kBootProto, "dhcp").Drop(keys::kIpAddr).Drop(keys::kNetmask);
    return;
  }
  const std::string ip(FieldText(settings.szIP));
  const std::string mask(FieldText(settings.szMask));
  edit->Set(keys::kIpAddr, ip.c_str())
      .Set(keys::kNetmask, mask.c_str())
      .Set(keys::kBootProto, "static");
}

void virtual_if::KeepCopy(const std::string& path) {
  // Without the copy the change is made all the same.
  static_cast<void>(Run(paths::kCp, "-f", path, path + ".saved"));
}
