// SPDX-License-Identifier: Apache-2.0
// The interface files: what groups of their keys mean.
#include "frame/model/ifcfg.h"

#include <ctime>

#include "frame/base/address.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/os/backup.h"

namespace frame::model {

void SetFixedAddress(KeyEdit* edit, const char* ip, const char* netmask) {
  edit->Set(keys::kIpAddr, ip).Set(keys::kNetmask, netmask).Set(keys::kBootProto, kStatic);
}

void SetLeasedAddress(KeyEdit* edit) {
  edit->Set(keys::kBootProto, kDhcp).Drop(keys::kIpAddr).Drop(keys::kNetmask);
}

void SetAddress(const ZARNNETIFSETTINGS& settings, KeyEdit* edit) {
  if (settings.blStatic == 0) return SetLeasedAddress(edit);
  const std::string ip(FieldText(settings.szIP));
  const std::string netmask(FieldText(settings.szMask));
  SetFixedAddress(edit, ip.c_str(), netmask.c_str());
}

std::string AddressLines(const ZARNNETIFSETTINGS& settings) {
  if (settings.blStatic == 0) return Line(keys::kBootProto, kDhcp);
  return Line(keys::kBootProto, kStatic) + Line(keys::kIpAddr, FieldText(settings.szIP)) +
         Line(keys::kNetmask, FieldText(settings.szMask));
}

bool IsFitAddress(const ZARNNETIFSETTINGS& settings) {
  if (settings.blStatic == 0) return true;
  const std::string ip(FieldText(settings.szIP));
  const std::string netmask(FieldText(settings.szMask));
  return !IsUnfitAddress(ip.c_str()) && !IsUnfitAddress(netmask.c_str());
}

std::string Line(const char* key, std::string_view value) {
  return std::string(key).append("=").append(value).append("\n");
}

void LeaveBond(KeyEdit* edit) {
  edit->Drop(keys::kMaster).Drop(keys::kSlave);
}

void JoinBond(KeyEdit* edit, const char* bond) {
  edit->Set(keys::kUserCtl, "no").Set(keys::kMaster, bond).Set(keys::kSlave, "yes");
}

std::string SavedPath(const std::string& path) {
  return path + kSavedSuffix;
}

void KeepSaved(const std::string& path) {
  const ErrorUnchanged ofChange;
  const std::string saved = SavedPath(path);
  // One of an earlier change may be another's, or of another mode.
  if (CopyFile(path, saved)) static_cast<void>(MakeAlike(saved, path));
}

std::string ChangeSuffix() {
  return Format(".tmp%ld", static_cast<long>(std::time(nullptr)));
}

}  // namespace frame::model
