// SPDX-License-Identifier: Apache-2.0
// Does an interface take its address by DHCP? A file that does not say so is repaired to a fixed
// address.
#include <string>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/folder.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

// Its lines carry the name of the exported function, whoever asks.
bool dhcpd::IsDhcp(const std::string& ifname) {
  constexpr Place kAt("net_lnx_is_dhcp", 0, "BlZARNLnxIsDHCP");
  if (IsUnfitName(ifname.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  const Lock lock(kNetworkRead);
  if (!lock.Held()) {
    LOG_ERROR_FUNC(kAt, "%s(%d) KOPACFileLock failed.");
    return false;
  }
  const std::string path = paths::Ifcfg(ifname);
  const KeyValue proto = ReadKey(path, keys::kBootProto, 16);
  if (proto.Found()) return proto.text == model::kDhcp;
  const unsigned code = proto.Unreadable() ? KOPACErrGet() : 0;  // a missing key has set none
  LOG_ERROR_FUNC(kAt, "%s(%d) Get BOOTPROTO failed.(%X)", code);
  // Readers come by here all the time, so a file without the key is repaired on the way. One that
  // cannot be read may well have it, and is left alone; a folder in its place has nothing to lose,
  // and the repair that fails tells of it.
  if ((!proto.Unreadable() || IsFolder(path)) && !SetKey(path, keys::kBootProto, model::kStatic)) {
    LOG_ERROR_FUNC(kAt, "%s(%d) KOPACFileSetKeyValue(%s, BOOTPROTO, static) failed.(%X)",
                   path.c_str(), KOPACErrGet());
  }
  return false;
}

int BlZARNLnxIsDHCP(const char* ifname) {
  return Boundary(0, [&]() -> int {
    if (ifname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return dhcpd::IsDhcp(ifname) ? 1 : 0;
  });
}
