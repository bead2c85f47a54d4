// Gives an interface a fixed IPv4 address, in its file and in the kernel; on failure the file is as
// it was.
#include <cerrno>
#include <cstring>
#include <string>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

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

bool WriteAndApply(const std::string& path, const char* ifname, const char* ip,
                   const char* netmask) {
  if (!WriteStaticAddress(path, ifname, ip, netmask)) {
    LOG_ERROR("%s:%d Set %s error.", path.c_str());
    return false;
  }
  if (!Run(paths::kStop, "dhcp-client", Format("IFACE=%s", ifname))) {
    LOG_ERROR("%s:%d unable to stop dhcp-client instance on %s", ifname);
  }
  const int prefix = ZARNNetNetmaskToPrefix(netmask);
  if (prefix < 0) {
    LOG_ERROR("%s:%d calculate prefix length failed");
    return false;
  }
  if (ZARNNetSetIP("-4", ifname, ip, static_cast<unsigned>(prefix), "add") < 0) {
    LOG_ERROR("%s:%d excute command /usr/zarn/sbin/zarnnet--set_ip failed");
    return false;
  }
  return true;
}

void EndBackup(Backup* backup, bool changed) {
  constexpr Place kAt(__FILE__, __LINE__, "ZARNILnxSetIPNetmask");
  if (!changed) {
    if (!backup->Restore()) LOG_ERROR_FUNC(kAt, "%s(%d): rename fail.");
  } else if (!backup->Remove()) {
    LOG_ERROR_FUNC(kAt, "%s(%d): unlink fail.");
  }
}

}  // namespace

bool ipv4::SetStatic(const std::string& ifname, const std::string& ip, const std::string& netmask) {
  if (IsUnfitName(ifname.c_str()) || ip.empty() || netmask.empty())
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  const std::string path = paths::Ifcfg(ifname);
  Backup backup(path, model::ChangeSuffix());
  if (!backup.Made()) {
    LOG_ERROR("%s:%d copy (%s, %s) failed.(strerror=%s)", path.c_str(), backup.CopyName().c_str(),
              std::strerror(errno));
  }
  const bool changed = WriteAndApply(path, ifname.c_str(), ip.c_str(), netmask.c_str());
  EndBackup(&backup, changed);
  return changed;
}

int ZARNILnxSetIPNetmask(const char* szIfname, const char* szIP, const char* szMask) {
  return Boundary(-1, [&]() -> int {
    if (AnyEmpty({szIfname, szIP, szMask})) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::SetStatic(szIfname, szIP, szMask) ? 0 : -1;
  });
}
