// The table of Open vSwitch bonds: one line a bond, its name first and its members after it.
#include "frame/facts/ovs_bonds.h"

#include <algorithm>

#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

namespace frame {

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

}  // namespace frame
