// SPDX-License-Identifier: Apache-2.0
// What the files of a VLAN and of its parent say while there is a VLAN and afterwards.
#include "virtual/vlan_files.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/folder.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

constexpr mode_t kMode = 0644;

// ---- lines

using Keys = std::initializer_list<std::string_view>;

bool IsOf(std::string_view line, std::string_view key) {
  return line.starts_with(key) && line.substr(key.size()).starts_with('=');
}

template <class Wanted>
std::optional<std::string> Lines(const std::string& path, const Wanted& wanted) {
  LineReader lines(path);
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, std::nullopt);
  std::string text;
  while (const auto line = lines.Next()) {
    if (!wanted(*line)) continue;
    text.append(*line);
    if (!line->ends_with('\n')) text.push_back('\n');
  }
  if (lines.Failed()) return Fail(ZARNNETERR_OPEN, std::nullopt);
  return text;
}

bool IsOfAny(std::string_view line, const Keys& keysWanted) {
  return std::any_of(keysWanted.begin(), keysWanted.end(),
                     [&](std::string_view key) { return IsOf(line, key); });
}

std::optional<std::string> LinesBut(const std::string& path, const Keys& left) {
  return Lines(path, [&](std::string_view line) { return !IsOfAny(line, left); });
}

// ---- writers that were killed

// Does the parent's file say that a VLAN has its addresses?
bool IsUnderVlan(const std::string& parent) {
  const std::string path = paths::Ifcfg(parent);
  return KeyIs(path, keys::kBootProto, model::kNoAddress) &&
         KeyIs(path, keys::kIpv6Type, model::kIpv6Off);
}

std::string ParentIn(const std::string& path) {
  constexpr std::size_t kNameSize = sizeof(KOPANETVLAN::szRowDev);
  return ReadKey(path, keys::kVlanParent, kNameSize).text;
}

std::vector<std::string> FilesOfVlansOver(const std::string& parent) {
  auto paths = PathsLike(paths::Ifcfg(parent) + ".*").value_or(std::vector<std::string>{});
  const auto other = [&](const std::string& path) {
    return path.ends_with(model::kSavedSuffix) || ParentIn(path) != parent;
  };
  paths.erase(std::remove_if(paths.begin(), paths.end(), other), paths.end());
  return paths;
}

// The file with the settings that a VLAN over this parent inherits. A create that was killed with
// the parent's file in place has left them in its temporary file or in the VLAN's.
std::string SettingsFile(const std::string& parent) {
  if (!IsUnderVlan(parent)) return paths::Ifcfg(parent);
  for (const std::string& path : AbandonedTemporaries(paths::kVlanTemplate)) {
    if (ParentIn(path) == parent) return path;
  }
  const auto files = FilesOfVlansOver(parent);
  return files.empty() ? paths::Ifcfg(parent) : files.front();
}

bool IsOnlyCopy(const std::string& path, const std::string& parent) {
  const std::string owner = ParentIn(path);
  return owner != parent && !IsUnfitName(owner.c_str()) && IsUnderVlan(owner) &&
         FilesOfVlansOver(owner).empty();
}

}  // namespace

std::optional<std::string> virtual_if::VlanFile(const KOPANETVLAN& vlan,
                                                const ZARNNETIFSETTINGS& settings) {
  constexpr std::size_t kValueSize = 1024;
  std::string text = model::Line(keys::kDevice, FieldText(vlan.szName)) +
                     model::Line(keys::kVlanParent, FieldText(vlan.szRowDev)) +
                     model::Line(keys::kVlanId, std::to_string(vlan.id)) +
                     model::Line(keys::kOnBoot, "yes") + model::AddressLines(settings);
  const std::string source = SettingsFile(std::string(FieldText(vlan.szRowDev)));
  for (const char* key : {keys::kIpv6Type, keys::kIpv6Address, keys::kIpv6Prefix,
                          keys::kIpv6Gateway, keys::kIpv6Dns}) {
    const KeyValue value = ReadKey(source, key, kValueSize);
    if (value.Unreadable() && Exists(source)) return std::nullopt;
    if (value.Found()) text += model::Line(key, value.text);
  }
  return text;
}

// The static IPv6 address stays for the day the VLAN goes; IPV6INIT=off keeps it out of use.
std::optional<std::string> virtual_if::ParentFileUnder(const std::string& parent) {
  auto text = LinesBut(paths::Ifcfg(parent), {keys::kBootProto, keys::kIpAddr, keys::kNetmask,
                                              keys::kIpv6Type, keys::kIpv6Gateway, keys::kIpv6Dns});
  if (text) {
    *text += model::Line(keys::kBootProto, model::kNoAddress) +
             model::Line(keys::kIpv6Type, model::kIpv6Off);
  }
  return text;
}

std::optional<std::string> virtual_if::ParentFileWithout(const KOPANETVLAN& vlan) {
  auto text = LinesBut(paths::Ifcfg(FieldText(vlan.szRowDev)),
                       {keys::kBootProto, keys::kIpv6Type, keys::kIpv6Address, keys::kIpv6Prefix});
  if (!text) return std::nullopt;
  // Every key that begins with IPV6DNS goes along.
  const auto addresses = Lines(paths::Ifcfg(FieldText(vlan.szName)), [](std::string_view line) {
    return line.starts_with(keys::kIpv6Dns) ||
           IsOfAny(line, {keys::kBootProto, keys::kIpAddr, keys::kNetmask, keys::kIpv6Type,
                          keys::kIpv6Address, keys::kIpv6Prefix, keys::kIpv6Gateway});
  });
  if (!addresses) return std::nullopt;
  return *text + *addresses;
}

void virtual_if::RemoveAbandonedFiles(const std::string& parent) {
  for (const char* nameTemplate :
       {paths::kVlanTemplate, paths::kVlanParentTemplate, paths::kVlanRemovedTemplate}) {
    for (const std::string& path : AbandonedTemporaries(nameTemplate)) {
      if (nameTemplate == paths::kVlanTemplate && IsOnlyCopy(path, parent)) continue;
      ::unlink(path.c_str());  // the next writer tries it again
    }
  }
}

// The mode is right before the file has its name, so that nobody is shut out when this call ends
// before it is set.
bool virtual_if::Prepare(Rewrite* file, const std::string& text) {
  return (file->IsOpen() && file->SetMode(kMode) && file->Fill(text)) ||
         Fail(ZARNNETERR_WRITE, false);
}

bool virtual_if::TakePlace(Rewrite* file, const std::string& path, const Place& at) {
  if (!file->TakeEffect()) return Fail(ZARNNETERR_RENAME, false, at);
  if (file->SetTargetMode(kMode)) return true;
  LOG_ERROR_AT(at, "%s:%d change %s's mode failed", path.c_str());
  return Fail(ZARNNETERR_REFUSED, false, at);
}
