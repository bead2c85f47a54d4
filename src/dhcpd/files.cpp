// SPDX-License-Identifier: Apache-2.0
// What the readers and writers of the DHCP server's files share: lines, whole files, refusals.
#include "dhcpd/files.h"

#include <sys/stat.h>

#include <zarncore/zarncore.h>

#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/line_file.h"
#include "frame/os/rewrite.h"

using namespace frame;

namespace dhcpd {
namespace {

constexpr std::size_t kLineSize = 1024;
constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

std::vector<std::string> Items(std::string_view text) {
  std::vector<std::string> items;
  for (const std::string_view field : SplitFields(text, ","))
    items.emplace_back(field);
  return items;
}

bool HasUnfitTexts(const DHCP_OPTION& option) {
  if (HasControlCharacters(FieldText(option.name)) || HasControlCharacters(FieldText(option.value)))
    return true;
  for (int i = 0; option.values != nullptr && i < option.values->nItem; ++i) {
    const char* const value = KOPACSzListGet(option.values, i);
    if (value == nullptr || HasControlCharacters(value)) return true;
  }
  return false;
}

bool HasUnfitTexts(const DHCP_SUBNET_CONF& conf) {
  for (const std::string_view text :
       {FieldText(conf.start), FieldText(conf.end), FieldText(conf.interface),
        FieldText(conf.domain), FieldText(conf.dns1), FieldText(conf.dns2),
        FieldText(conf.dns_more), FieldText(conf.netmask), FieldText(conf.router),
        FieldText(conf.tag), FieldText(conf.v6mode)}) {
    if (HasControlCharacters(text)) return true;
  }
  for (const DHCP_OPTION* option = conf.options; option != nullptr; option = option->next) {
    if (HasUnfitTexts(*option)) return true;
  }
  return false;
}

}  // namespace

bool IsSwitchedOn(const std::string& path) {
  return Exists(path) && KeyIs(path, dhcp_files::kEnable, dhcp_files::kYes);
}

bool MakeFolderOrLog(const Place& at) {
  if (RunStatus(paths::kMkdir, "-p", dhcp_files::kFolder) == 0) return true;
  LOG_ERROR_AT(at, "%s:%d Failed to mkdir [%s]", dhcp_files::kFolder);
  return false;
}

bool WriteFragmentOrLog(const std::string& path, std::string_view text, const Place& at) {
  Rewrite file(path);
  if (PutInPlace(&file, file.IsOpen() && file.SetMode(kMode), text, at)) return true;
  LOG_ERROR_AT(at, "%s:%d Failed to open file [%s].", path.c_str());
  return false;
}

bool WriteSwitchOrLog(const std::string& path, bool enable, const Place& at) {
  const std::string line = Format(kQuotedLine, dhcp_files::kEnable, YesOrNo(enable));
  Rewrite file(path);
  if (PutInPlace(&file, file.IsOpen() && file.SetModeOfTarget(kMode), line, at)) return true;
  LOG_ERROR_AT(at, "%s:%d Failed to open file [%s].", path.c_str());
  return false;
}

std::string InterfaceLine(std::string_view ifname) {
  return std::string(dhcp_files::kInterface).append("=").append(ifname).append("\n");
}

std::string RangeLine(std::string_view tag, std::string_view start, std::string_view end,
                      std::string_view mask, int lease) {
  std::string line = std::string(dhcp_files::kRange).append("=set:").append(tag);
  for (const std::string_view field : {start, end, mask})
    line.append(",").append(field);
  return line.append(",").append(std::to_string(lease)).append("\n");
}

std::string OptionLine(std::string_view tag, std::string_view option, std::string_view value) {
  std::string line = std::string(dhcp_files::kOption).append("=tag:").append(tag);
  return line.append(",").append(option).append(",").append(value).append("\n");
}

std::vector<std::string> ItemsOfLineWith(const std::string& path, const char* text) {
  const std::string line = LineContaining(path, text, kLineSize);
  return line.empty() ? std::vector<std::string>() : Items(line);
}

std::vector<std::string> ItemsOfKey(const std::string& path, const char* key) {
  const KeyValue value = ReadKey(path, key, kLineSize);
  return value.Found() ? Items(value.text) : std::vector<std::string>();
}

bool IsRefusedName(const char* name) {
  if (IsEmpty(name)) return true;
  return IsUnfitName(name) && !Fail(ZARNNETERR_BAD_PARAMETER, false);
}

bool RefusesText(std::string_view text) {
  return HasControlCharacters(text) && !Fail(ZARNNETERR_BAD_PARAMETER, false);
}

bool RefusesTexts(const DHCP_SUBNET_CONF& conf) {
  return HasUnfitTexts(conf) && !Fail(ZARNNETERR_BAD_PARAMETER, false);
}

}  // namespace dhcpd
