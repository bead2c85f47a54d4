// The files of the built-in DHCP server: their names, and what their readers and writers share.
#include "dhcpd/files.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sys/stat.h>

#include <zarncore/zarncore.h>

#include "frame/base/error.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"
#include "frame/os/rewrite.h"

using namespace frame;

namespace dhcpd {
namespace {

constexpr std::size_t kLineSize = 1024;

std::string Name(const char* stem, std::string_view ifname, const std::string& rest) {
  return std::string(stem).append("-").append(ifname).append(rest);
}

std::string SubnetName(unsigned subnet, const char* extension) {
  return "-subnet" + std::to_string(subnet) + extension;
}

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

std::string InterfaceInfo(const char* stem, std::string_view ifname) {
  return Name(stem, ifname, ".info");
}

std::string TagConf(std::string_view ifname, std::string_view tag) {
  return Name(kStemV4, ifname, std::string("-").append(tag).append(".conf"));
}

std::string TagInfo(std::string_view ifname, std::string_view tag) {
  return Name(kStemV4, ifname, std::string("-").append(tag).append(".info"));
}

std::string SubnetConf(const char* stem, std::string_view ifname, unsigned subnet) {
  return Name(stem, ifname, SubnetName(subnet, ".conf"));
}

std::string SubnetInfo(const char* stem, std::string_view ifname, unsigned subnet) {
  return Name(stem, ifname, SubnetName(subnet, ".info"));
}

bool MakeFolder() {
  return RunStatus(paths::kMkdir, "-p", kFolder) == 0;
}

bool ReplaceFile(const std::string& path, std::string_view text) {
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
  Rewrite file(path);
  return file.IsOpen() && file.SetMode(kMode) && file.Fill(text) && file.TakeEffect();
}

std::string SwitchLine(bool enable) {
  return Format(kQuotedLine, kEnableKey, YesOrNo(enable));
}

std::string InterfaceLine(std::string_view ifname) {
  return std::string(kInterfaceKey).append("=").append(ifname).append("\n");
}

std::string RangeLine(std::string_view tag, std::string_view start, std::string_view end,
                      std::string_view mask, int lease) {
  std::string line = std::string(kRangeKey).append("=set:").append(tag);
  for (const std::string_view field : {start, end, mask})
    line.append(",").append(field);
  return line.append("," + std::to_string(lease) + "\n");
}

std::string OptionLine(std::string_view tag, std::string_view option, std::string_view value) {
  std::string line = std::string(kOptionKey).append("=tag:").append(tag);
  return line.append(",").append(option).append(",").append(value).append("\n");
}

std::vector<std::string> ItemsOfLineWith(const std::string& path, const char* text) {
  constexpr int kContains = 0x402;
  char line[kLineSize] = "";
  if (KOPACFileGetLine(path.c_str(), text, line, sizeof line, kContains) <= 0) return {};
  return Items(std::string_view(line).substr(0, std::strcspn(line, "\n")));
}

std::vector<std::string> ItemsOfKey(const std::string& path, const char* key) {
  const KeyValue value = ReadKey(path, key, kLineSize);
  return value.Found() ? Items(value.text) : std::vector<std::string>();
}

bool HasControlCharacters(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](unsigned char character) { return std::iscntrl(character) != 0; });
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
