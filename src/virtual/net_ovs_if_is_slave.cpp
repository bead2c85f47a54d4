// Open vSwitch devices: which interface is one, which is a member of a bond of theirs, what lies
// under one.
#include <cstring>
#include <string>
#include <string_view>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/ovs_bonds.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

constexpr std::string_view kOvsPrefix = "ovs_";
constexpr std::string_view kOvsBondPrefix = "ovs_bond";

}  // namespace

int KOPANetOVSIfIsMaster(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const std::string_view ifname(szIfname);
    if (!ifname.starts_with(kOvsPrefix) || !Exists(paths::SysVirtualNet(ifname))) return 0;
    return ifname.starts_with(kOvsBondPrefix) ? 2 : 1;
  });
}

int KOPANetOVSIfIsSlave(const char* szIfname) {
  return Boundary(
      0,
      [&]() -> int {
        if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
        if (!Exists(paths::SysVirtualNet(std::string(kOvsPrefix).append(szIfname)))) return 0;
        const auto member = IsOvsBondMember(szIfname);
        if (!member) LOG_ERROR("%s:%d Failed to open %s.", paths::kOvsBonds);
        return member.value_or(false) ? 1 : 0;
      },
      [&] { LOG_ERROR("%s:%d Failed to alloc memory."); });
}

int KOPANetOVSGetOriginalIf(const char* szIfname, char* szOut, size_t cbOut) {
  return Boundary(-1, [&]() -> int {
    if (szIfname == nullptr || szOut == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string_view ifname(szIfname);
    if (ifname.size() < kOvsPrefix.size() || cbOut <= ifname.size() - kOvsPrefix.size()) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    std::memset(szOut, 0, cbOut);
    if (!ifname.starts_with(kOvsPrefix)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto words = SplitWords(ifname.substr(kOvsPrefix.size()), " \t\r\n\v\f");
    if (words.empty()) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    CopyText(words.front(), szOut, cbOut);
    return 0;
  });
}
