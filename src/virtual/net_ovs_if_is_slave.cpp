// Open vSwitch devices: which interface is one, which is a member of a bond of theirs, what lies
// under one.
#include <cstring>
#include <string>
#include <string_view>

#include <zarnnetsdk/virtual.h>

#include "frame/file.h"
#include "frame/log.h"
#include "frame/ovs_bonds.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

namespace {

constexpr std::string_view kOvsPrefix = "ovs_";
constexpr std::string_view kOvsBondPrefix = "ovs_bond";

}  // namespace

int KOPANetOVSIfIsMaster(const char* szIfname) try {
  if (IsUnfitName(szIfname)) return FRAME_FAIL(kBadParameter, 0);
  const std::string_view ifname(szIfname);
  if (!ifname.starts_with(kOvsPrefix) || !Exists(paths::SysVirtualNet(ifname))) return 0;
  return ifname.starts_with(kOvsBondPrefix) ? 2 : 1;
}
FRAME_NO_EXCEPTIONS(0)

int KOPANetOVSIfIsSlave(const char* szIfname) try {
  if (IsUnfitName(szIfname)) return FRAME_FAIL(kBadParameter, 0);
  if (!Exists(paths::SysVirtualNet(std::string(kOvsPrefix).append(szIfname)))) return 0;
  const auto member = IsOvsBondMember(szIfname);
  if (!member) LOG_ERROR("%s:%d Failed to open %s.", paths::kOvsBonds);
  return member.value_or(false) ? 1 : 0;
} catch (...) {
  LOG_ERROR("%s:%d Failed to alloc memory.");
  return FRAME_FAIL(kNoMemory, 0);
}

int KOPANetOVSGetOriginalIf(const char* szIfname, char* szOut, size_t cbOut) try {
  if (szIfname == nullptr || szOut == nullptr) return FRAME_FAIL(kBadParameter, -1);
  const std::string_view ifname(szIfname);
  if (ifname.size() < kOvsPrefix.size() || cbOut <= ifname.size() - kOvsPrefix.size()) {
    return FRAME_FAIL(kBadParameter, -1);
  }
  std::memset(szOut, 0, cbOut);
  if (!ifname.starts_with(kOvsPrefix)) return FRAME_FAIL(kBadParameter, -1);
  const auto words = SplitWords(ifname.substr(kOvsPrefix.size()), " \t\r\n\v\f");
  if (words.empty()) return FRAME_FAIL(kBadParameter, -1);
  CopyText(words.front(), szOut, cbOut);
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)
