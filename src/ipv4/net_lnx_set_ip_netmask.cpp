// SPDX-License-Identifier: Apache-2.0
// Gives an interface a fixed IPv4 address, in its file and in the kernel; on failure a file that
// was there is as it was.
#include <cerrno>
#include <cstring>
#include <string>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"
#include "ipv4/live_address.h"

using namespace frame;

namespace {

bool WriteStaticAddress(const std::string& path, const std::string& ifname, const std::string& ip,
                        const std::string& netmask) {
  KeyEdit edit;
  edit.Set(keys::kDevice, ifname.c_str()).Set(keys::kOnBoot, "yes");
  model::SetFixedAddress(&edit, ip.c_str(), netmask.c_str());
  model::LeaveBond(&edit);
  if (edit.WriteTo(path)) return true;
  LOG_ERROR("%s:%d Set %s error.", path.c_str());
  return false;
}

bool Apply(const std::string& ifname, const std::string& ip, const std::string& netmask) {
  if (!Run(paths::kStop, "dhcp-client", Format("IFACE=%s", ifname.c_str()))) {
    LOG_ERROR("%s:%d unable to stop dhcp-client instance on %s", ifname.c_str());
  }
  const auto prefix = OneBitsOf(netmask);
  if (!prefix) {
    LOG_ERROR("%s:%d calculate prefix length failed");
    return false;
  }
  if (!ipv4::AddAddress(ifname, ip, *prefix)) {
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
  // Texts that no address has: checked before they are in a file.
  if (IsUnfitName(ifname.c_str()) || IsUnfitAddress(ip.c_str()) || IsUnfitAddress(netmask.c_str()))
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  const std::string path = paths::Ifcfg(ifname);
  Backup backup(path, model::ChangeSuffix());
  if (!backup.Made()) {
    LOG_ERROR("%s:%d copy (%s, %s) failed.(strerror=%s)", path.c_str(), backup.CopyName().c_str(),
              std::strerror(errno));
  }
  const bool changed = WriteStaticAddress(path, ifname, ip, netmask) && Apply(ifname, ip, netmask);
  EndBackup(&backup, changed);
  return changed;
}

int ZARNILnxSetIPNetmask(const char* szIfname, const char* szIP, const char* szMask) {
  return Boundary(-1, [&]() -> int {
    if (AnyEmpty({szIfname, szIP, szMask})) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::SetStatic(szIfname, szIP, szMask) ? 0 : -1;
  });
}
