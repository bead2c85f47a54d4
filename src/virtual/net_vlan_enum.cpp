// All VLAN interfaces, from the VLAN driver's table.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"

using namespace frame;

namespace {

constexpr int kHeaderLines = 2;

struct Free {
  void operator()(KOPANETVLAN* vlans) const { std::free(vlans); }
};
using Vlans = std::unique_ptr<KOPANETVLAN[], Free>;

// The widths bound the fields. They also let the kernel's widest name, behind which no blank
// stands, end before its bar.
bool ReadVlan(const char* line, KOPANETVLAN* vlan) {
  static_assert(sizeof vlan->szName == 16 && sizeof vlan->szRowDev == 16);
  return std::sscanf(line, "%15s | %d | %15s", vlan->szName, &vlan->id, vlan->szRowDev) == 3;
}

bool ReadVlans(const StringList& lines, KOPANETVLAN* vlans) {
  for (int i = kHeaderLines; i < lines.Count(); ++i) {
    const char* const line = lines[i];
    if (line == nullptr) {
      LOG_ERROR("%s:%d Get NULL string from %s", paths::kProcVlanConfig);
      return false;
    }
    if (!ReadVlan(line, &vlans[i - kHeaderLines])) {
      SetError(ZARNNETERR_UNEXPECTED_CONTENT);
      LOG_ERROR("%s:%d Get wrong format from %s: %s", paths::kProcVlanConfig, line);
      return false;
    }
  }
  return true;
}

}  // namespace

int KOPANetVlanEnum(KOPANETVLAN** ppVlan, int* pcVlan) {
  return Boundary(-1, [&]() -> int {
    if (ppVlan == nullptr || pcVlan == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    *ppVlan = nullptr;
    *pcVlan = 0;
    if (KOPANetVlanExist() == 0) return 0;
    StringList lines(512);
    if (KOPACFileReadLines(paths::kProcVlanConfig, lines.Out()) < 0)
      return Fail(ZARNNETERR_OPEN, -1);
    const int count = lines.Count() - kHeaderLines;
    if (count <= 0) return 0;
    Vlans vlans(static_cast<KOPANETVLAN*>(
        std::calloc(static_cast<std::size_t>(count), sizeof(KOPANETVLAN))));
    if (vlans == nullptr) return Fail(ZARNNETERR_NO_MEMORY, -1);
    if (!ReadVlans(lines, vlans.get())) return -1;
    *ppVlan = vlans.release();
    *pcVlan = count;
    return 0;
  });
}
