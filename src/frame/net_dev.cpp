// The interfaces of /proc/net/dev that the appliance calls its own, in the order of every enumeration.
#include "frame/net_dev.h"

#include <algorithm>
#include <string_view>

#include "frame/error.h"
#include "frame/file.h"
#include "frame/paths.h"
#include "frame/text.h"

namespace frame {
namespace {

bool IsLeftOut(std::string_view name) {
  return name.find("mon.") != std::string_view::npos || name.starts_with("tap") ||
         name.starts_with("docker") || name.starts_with("dplv");
}

}  // namespace

std::optional<std::vector<std::string>> ListNetDev() {
  LineReader lines(paths::kProcNetDev);
  if (!lines.IsOpen()) {
    FRAME_SET_ERROR(kOpen);
    return std::nullopt;
  }
  std::vector<std::string> names;
  while (const auto line = lines.Next()) {
    const std::size_t colon = line->find(':');  // the two heading lines have none
    if (colon == std::string_view::npos) continue;
    const std::string_view name = Trimmed(line->substr(0, colon));
    if (IsLeftOut(name)) continue;
    if (names.size() == kMaxInterfaces) break;
    names.emplace_back(name);
  }
  std::sort(names.begin(), names.end(), NaturalLess);
  return names;
}

}  // namespace frame
