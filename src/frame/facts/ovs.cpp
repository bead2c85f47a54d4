// SPDX-License-Identifier: Apache-2.0
// Open vSwitch on this machine. The table of its bonds has one line a bond, its name first and its
// members after it.
#include "frame/facts/ovs.h"

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ovs.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

namespace frame::facts {

int OvsKindOf(std::string_view ifname) {
  if (IsUnfitName(std::string(ifname).c_str())) {
    return Fail(ZARNNETERR_BAD_PARAMETER, static_cast<int>(ZARNOVS_NONE));
  }
  if (!model::IsOvsName(ifname) || !Exists(paths::SysVirtualNet(ifname))) return ZARNOVS_NONE;
  return ifname.starts_with(model::kOvsBondPrefix) ? ZARNOVS_BOND : ZARNOVS_DEVICE;
}

bool IsUnderOvs(std::string_view ifname) {
  return Exists(paths::SysVirtualNet(model::OvsDeviceOver(ifname)));
}

std::optional<std::string> PortUnder(std::string_view ifname) {
  if (!model::IsOvsName(ifname)) return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
  const auto words = SplitWords(ifname.substr(model::kOvsPrefix.size()), " \t\r\n\v\f");
  if (words.empty()) return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
  return std::string(words.front());
}

// An interface that several lines name belongs to the first.
OvsBonds::OvsBonds() {
  if (!Exists(paths::kOvsBonds)) return;
  LineReader lines(paths::kOvsBonds);
  isReadable_ = lines.IsOpen();
  while (const auto line = isReadable_ ? lines.Next() : std::nullopt) {
    const auto words = SplitWords(Trimmed(*line), " ");
    for (std::size_t i = 1; i < words.size(); ++i)
      bondOfMember_.emplace(words[i], words.front());
  }
}

std::optional<std::string> OvsBonds::Of(std::string_view ifname) const {
  if (!isReadable_) return std::nullopt;
  const auto member = bondOfMember_.find(ifname);
  return member == bondOfMember_.end() ? std::string() : member->second;
}

std::optional<bool> OvsBonds::HaveMember(std::string_view ifname) const {
  if (!isReadable_) return std::nullopt;
  return bondOfMember_.contains(ifname);
}

// The device over the interface is looked for only where the answer depends on it.
bool IsOvsPort(std::string_view ifname, const OvsBonds& bonds) {
  const auto member = bonds.HaveMember(ifname);
  if (member == false || !IsUnderOvs(ifname)) return false;
  if (!member)
    LOG_ERROR_AT(Place("net_ovs_if_is_slave"), "%s:%d Failed to open %s.", paths::kOvsBonds);
  return member.value_or(false);
}

}  // namespace frame::facts
