// Gives an interface a fixed IPv4 address, in its file and in the kernel; on failure the file is as
// it was.
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

bool WriteStaticAddress(const std::string& path, const char* ifname, const char* ip,
                        const char* netmask) {
  return KeyEdit()
      .Set(keys::kDevice, ifname)
      .Set(keys::kOnBoot, "yes")
      .Set(keys::kIpAddr, ip)
      .Set(keys::kNetmask, netmask)
      .Set(keys::kBootProto, "static")
      .Drop("MASTER")
      .Drop("SLAVE")
      .WriteTo(path);
}

int WriteAndApply(const std::string& path, const char* ifname, const char* ip,
                  const char* netmask) {
  if (!WriteStaticAddress(path, ifname, ip, netmask)) {
    LOG_ERROR("%s:%d Set %s error.", path.c_str());
    return -1;
  }
  if (!Run(paths::kStop, "dhcp-client", Format("IFACE=%s", ifname))) {
    LOG_ERROR("%s:%d unable to stop dhcp-client instance on %s", ifname);
  }
  const int prefix = ZARNNetNetmaskToPrefix(netmask);
  if (prefix < 0) {
    LOG_ERROR("%s:%d calculate prefix length failed");
    return -1;
  }
  if (ZARNNetSetIP("-4", ifname, ip, static_cast<unsigned>(prefix), "add") < 0) {
    LOG_ERROR("%s:%d excute command /usr/zarn/sbin/zarnnet--set_ip failed");
    return -1;
  }
  return 0;
}

}  // namespace

int ZARNILnxSetIPNetmask(const char* szIfname, const char* szIP, const char* szMask) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (IsUnfitName(szIfname) || AnyEmpty({szIP, szMask}))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(szIfname);
    Backup backup(path, Format(".tmp%ld", static_cast<long>(std::time(nullptr))));
    if (!backup.Made()) {
      LOG_ERROR("%s:%d copy (%s, %s) failed.(strerror=%s)", path.c_str(), backup.CopyName().c_str(),
                std::strerror(errno));
    }
    const int result = WriteAndApply(path, szIfname, szIP, szMask);
    if (result < 0) {
      if (!backup.Restore()) LOG_ERROR_FUNC(at, "%s(%d): rename fail.");
    } else if (!backup.Remove()) {
      LOG_ERROR_FUNC(at, "%s(%d): unlink fail.");
    }
    return result;
  });
}
