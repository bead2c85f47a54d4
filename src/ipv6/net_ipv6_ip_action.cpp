// One IPv6 address or default route, added to or deleted from the running kernel.
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "ipv6/config.h"

using namespace frame;

int ZARNNetIPv6IPAction(int cmd, const char* szIfname, const char* szAddr, unsigned int prefix,
                        const char* szGateway) {
  return Boundary(-1, [&]() -> int {
    if (prefix > static_cast<unsigned>(ipv6::kMaxPrefix)) {
      LOG_ERROR("%s:%d Paramter Prefix length %d out of range [0, 128] ", static_cast<int>(prefix));
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (szAddr == nullptr) {
      LOG_ERROR("%s:%d Paramter szV6IPAddr can not be NULL");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (szIfname == nullptr) {
      LOG_ERROR("%s:%d Paramter szDevice can not be NULL");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (cmd != ipv6::kAdd && cmd != ipv6::kDelete) {
      LOG_ERROR("%s:%d Paramter ZARNIPV6IPCMD is not a legal parameter");
      return -1;
    }
    const char* const action = cmd == ipv6::kAdd ? "add" : "del";
    if (!IsEmpty(szGateway)) {
      return RunVectorStatus(paths::kIp, "-6", "route", action, "default", "via", szGateway, "dev",
                             szIfname);
    }
    if (ZARNNetSetIP("-6", szIfname, szAddr, prefix, action) < 0) {
      // The prefix stands for a netmask in IPv6; the line keeps its place for one.
      LOG_ERROR("%s:%d set IP failed. IP = %s, Netmask = %s, prefix = %d", szAddr, "",
                static_cast<int>(prefix));
      return -1;
    }
    return 0;
  });
}
