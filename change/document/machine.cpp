// SPDX-License-Identifier: Apache-2.0
// Keys, folders and masks.
#include "document/machine.h"

#include <arpa/inet.h>
#include <array>
#include <filesystem>
#include <unistd.h>

#include <zarnnetsdk/addr.h>

#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "record/folder.h"

namespace change {

std::string KeyOf(const std::string& path, const char* key, std::string* unread) {
  std::array<char, 4096> value{};
  const int length = KOPACFileGetKeyValue(path.c_str(), key, value.data(), value.size(), 0);
  const bool failed = length < 0 && IsFile(path) && ::geteuid() == 0;
  if (failed && unread != nullptr) *unread = path;
  return length > 0 ? value.data() : "";
}

bool IsFile(const std::string& path) {
  std::error_code none;
  return std::filesystem::is_regular_file(path, none);
}

std::vector<std::string> NamesIn(const std::string& folder, const std::string& prefix,
                                 std::string* unread) {
  std::vector<std::string> names;
  const bool whole = EachNameIn(folder, [&](const std::string& name) {
    if (name.starts_with(prefix)) names.push_back(name.substr(prefix.size()));
  });
  if (!whole && unread != nullptr) *unread = folder;
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> ConfiguredInterfaces(std::string* unread) {
  auto names = NamesIn(frame::paths::kIfcfgFolder, "ifcfg-", unread);
  std::erase_if(names,
                [](const std::string& name) { return name.ends_with(frame::model::kSavedSuffix); });
  return names;
}

std::string SavedIfcfg(const std::string& ifname) {
  return frame::paths::Ifcfg(ifname) + frame::model::kSavedSuffix;
}

bool EditKeys(const std::string& path, const Keys& set, const std::vector<const char*>& drop) {
  Hash toSet;
  Hash toDrop;
  for (const auto& [key, value] : set)
    toSet.Set(key, value);
  for (const char* key : drop)
    toDrop.Set(key, "");
  return KOPACFileSetKeys(path.c_str(), toSet.Get(), toDrop.Get(), nullptr) == 0;
}

std::string MaskOf(long prefix) {
  constexpr unsigned kBits = 32;
  const std::uint32_t ones = prefix <= 0 ? 0 : ~0U << (kBits - static_cast<unsigned>(prefix));
  const in_addr mask{htonl(ones)};
  std::array<char, INET_ADDRSTRLEN> text{};
  ::inet_ntop(AF_INET, &mask, text.data(), text.size());
  return text.data();
}

long PrefixOf(const std::string& mask) {
  return BlKOPAIsValidIpMask(mask.c_str()) == 1 ? ZARNNetNetmaskToPrefix(mask.c_str()) : 0;
}

std::string Cidr(const std::string& address, long prefix) {
  return address + "/" + std::to_string(prefix);
}

}  // namespace change
