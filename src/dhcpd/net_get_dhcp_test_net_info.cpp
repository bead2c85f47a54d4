// SPDX-License-Identifier: Apache-2.0
// A trial run of the DHCP client: which address would the network hand out?
#include <cerrno>
#include <cstring>
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/shared_folder.h"

using namespace frame;

namespace {

// The client wants its hook where only root writes.
bool EnsureClientScript() {
  if (Exists(paths::kDhclientScriptCopy)) return true;
  if (Run(paths::kCp, "-f", paths::kDhclientScript, paths::kDhclientScriptCopy)) return true;
  LOG_ERROR("%s:%d copy /etc/dhclient/dhclient-script to /var/run/dhclient-script failed");
  return false;
}

bool RunTrial(const std::string& ifname) {
  const std::string lease = paths::DhcpLease(ifname);
  static_cast<void>(ClaimFile(lease));  // the client says so itself when it cannot write there
  const std::string pid = paths::DhcpPid(ifname);
  if (Run(paths::kDhclient, "-q", "--zarn_test", "-lf", lease, "-pf", pid, "-sf",
          paths::kDhclientScriptCopy, ifname)) {
    return true;
  }
  LOG_ERROR("%s:%d /usr/sbin/dhclient -q --zarn_test -lf %s -pf %s -sf %s %s failed(%s).",
            lease.c_str(), pid.c_str(), paths::kDhclientScriptCopy, ifname.c_str(),
            std::strerror(errno));
  SetError(ZARNNETERR_COMMAND);
  return false;
}

// A result without the key is no failure of the reader's, so the code is set here.
template <std::size_t N>
bool ReadResult(const std::string& path, const char* key, char (&field)[N]) {
  if (!ReadOptionalKeyInto(path, key, field)) return false;
  return *field != '\0' || Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
}

}  // namespace

int ZARNIGetDHCPTestNetInfo(ZARNNETIFADDR* info) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (info == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string ifname(FieldText(info->szName));
    if (IsUnfitName(ifname.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (!EnsureClientScript() || !RunTrial(ifname)) return -1;
    const std::string result = paths::DhcpInfo(ifname);
    if (!ReadResult(result, keys::kIpAddr, info->szIP)) {
      LOG_ERROR_FUNC(at, "%s(%d) KOPACFileGetKeyValue(IPADDR) failed(%X).", KOPACErrGet());
      return -1;
    }
    if (!ReadResult(result, keys::kNetmask, info->szMask)) {
      LOG_ERROR_FUNC(at, "%s(%d) KOPACFileGetKeyValue(NETMASK) failed(%X).", KOPACErrGet());
      return -1;
    }
    return 0;
  });
}
