// The boot protocol of an interface that is on its own: a slave's "none" would leave it without any
// address.
#include <strings.h>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/os/key_file.h"

using namespace frame;

int ZARNNetLinkAggrConfUpdateBootProto(const char* szPath, PKOPACSZHASH* ppSet) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szPath) || ppSet == nullptr || *ppSet == nullptr)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const KeyValue value = ReadKey(szPath, keys::kBootProto, 64);
    if (!value.Found()) return KOPACSzHashSetValue(ppSet, keys::kBootProto, "dhcp");
    for (const char* kept : {"static", "dhcp"}) {
      if (strcasecmp(kept, value.text.c_str()) == 0) return 0;
    }
    if (KOPACSzHashSetValue(ppSet, keys::kBootProto, "dhcp") < 0 ||
        KOPACSzHashSetValue(ppSet, keys::kIpAddr, "") < 0) {
      return -1;
    }
    return KOPACSzHashSetValue(ppSet, keys::kNetmask, "");
  });
}
