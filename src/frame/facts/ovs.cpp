// Open vSwitch on this machine. The table of its bonds has one line a bond, its name first and its
// members after it.
#include "frame/facts/ovs.h"

#include <algorithm>

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

std::optional<std::string> OvsBondOf(std::string_view ifname) {
  if (!Exists(paths::kOvsBonds)) return "";
  LineReader lines(paths::kOvsBonds);
  if (!lines.IsOpen()) return std::nullopt;
  while (const auto line = lines.Next()) {
    const auto words = SplitWords(Trimmed(*line), " ");
    if (!words.empty() && std::find(words.begin() + 1, words.end(), ifname) != words.end())
      return std::string(words.front());
  }
  return "";
}

std::optional<bool> IsOvsBondMember(std::string_view ifname) {
  const auto bond = OvsBondOf(ifname);
  if (!bond) return std::nullopt;
  return !bond->empty();
}

bool IsOvsPort(std::string_view ifname) {
  if (!IsUnderOvs(ifname)) return false;
  const auto member = IsOvsBondMember(ifname);
  if (!member)
    LOG_ERROR_AT(Place("net_ovs_if_is_slave"), "%s:%d Failed to open %s.", paths::kOvsBonds);
  return member.value_or(false);
}

}  // namespace frame::facts
