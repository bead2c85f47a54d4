// SPDX-License-Identifier: Apache-2.0
// Gives a port another name: in the kernel, in its file and in the settings. When a step fails
// everything is as it was; what a killed call has left behind is brought to its end by the next
// one.
#include <algorithm>
#include <cerrno>
#include <net/if.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/base/undo.h"
#include "frame/facts/ovs.h"
#include "frame/model/ifcfg.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/file.h"
#include "frame/os/folder.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/line_file.h"
#include "frame/os/lock.h"
#include "iface/dhcp_client.h"

using namespace frame;

namespace {

struct Names {
  std::string now;
  std::string next;
};

// ---- may it be renamed?

// The kernel makes a number of "%d", and keeps ":" for labels of addresses and "." and ".." for
// folders; "." also begins the id of a VLAN.
bool IsPortName(const char* name) {
  return !IsUnfitName(name) && FitsKernel(name) &&
         std::string_view(name).find_first_of("%:.") == std::string_view::npos;
}

// Bonds, bridges, Open vSwitch and VLANs know their ports by name, in files of their own.
bool IsBuiltUpon(const std::string& ifname) {
  const auto uppers = EntriesOf(paths::SysNet(ifname, ""), "upper_");
  return !uppers || !uppers->empty() || facts::IsUnderOvs(ifname);
}

// How far an earlier call, which was killed, has come.
enum class Progress { kNone, kFile, kKernel };

// The lines of an interface file but the one with its name.
std::optional<std::vector<std::string>> SettingsOf(const std::string& ifname) {
  auto lines = LinesOf(paths::Ifcfg(ifname));
  if (!lines) return std::nullopt;
  const std::string device = std::string(keys::kDevice) + '=';
  std::erase_if(*lines, [&](const std::string& line) { return line.starts_with(device); });
  return lines;
}

// Both files stand only while a rename is under way: the new one is the old one with another name.
bool IsUnderWay(const Names& names) {
  if (!Exists(paths::Ifcfg(names.now)) || !Exists(paths::Ifcfg(names.next))) return false;
  const auto settings = SettingsOf(names.now);
  return settings && settings == SettingsOf(names.next);
}

bool IsPort(const InetSocket& socket, const std::string& ifname) {
  const auto flags = socket.Flags(ifname);
  // The socket knows an interface by its other names too; its files do not.
  return flags && (*flags & IFF_LOOPBACK) == 0 && Exists(paths::SysNet(ifname, ""));
}

// Nothing, logged and with its code, when the port may not be renamed.
std::optional<Progress> Examine(const InetSocket& socket, const Names& names) {
  const bool isUnderWay = IsUnderWay(names);
  const bool isPort = IsPort(socket, names.now);
  if (!isPort && isUnderWay && !socket.Flags(names.now) && IsPort(socket, names.next))
    return Progress::kKernel;
  if (!isPort) {
    LOG_ERROR("%s:%d No port %s", names.now.c_str());
    return Fail(ZARNNETERR_NOT_FOUND, std::nullopt);
  }
  if (socket.Flags(names.next) || (Exists(paths::Ifcfg(names.next)) && !isUnderWay)) {
    LOG_ERROR("%s:%d There is a %s already", names.next.c_str());
    return Fail(ZARNNETERR_EXISTS, std::nullopt);
  }
  if (IsBuiltUpon(names.now)) {
    LOG_ERROR("%s:%d %s is part of another interface", names.now.c_str());
    return Fail(ZARNNETERR_REFUSED, std::nullopt);
  }
  return isUnderWay ? Progress::kFile : Progress::kNone;
}

// ---- the files

// Makes the interface's file under its new name. The one under the old name stays until the kernel
// has renamed the port: whenever the machine stops, the port has its settings.
bool MakeNewFile(const Names& names, Undo* undo) {
  const std::string path = paths::Ifcfg(names.now);
  const std::string newPath = paths::Ifcfg(names.next);
  if (!Exists(path)) return true;
  // A link has mode and owner from the beginning, and the edit replaces it by a file of its own.
  const bool isMade = ::link(path.c_str(), newPath.c_str()) == 0 || errno == EEXIST;
  if (isMade) undo->Add([newPath] { ::unlink(newPath.c_str()); });
  if (isMade && SetKey(newPath, keys::kDevice, names.next.c_str())) return true;
  LOG_ERROR("%s:%d Failed to rename the file of %s. %m", names.now.c_str());
  return Fail(ZARNNETERR_RENAME, false);
}

// Gives the MTU a setting under the new name, beside the one under the old name. The backup is that
// of the settings, where they are touched.
bool MakeNewSetting(const Names& names, std::optional<Backup>* backup) {
  const KeyValue mtu = ReadKey(paths::kInfo, model::MtuKey(names.now).c_str(), 16);
  if (mtu.Found()) {
    backup->emplace(paths::kInfo, model::ChangeSuffix());
    const std::string key = model::MtuKey(names.next);
    if (!(*backup)->Made()) {
      SetError(ZARNNETERR_OPEN);
    } else if (SetKey(paths::kInfo, key.c_str(), mtu.text.c_str(), kQuotedLine)) {
      return true;
    }
  } else if (!mtu.Unreadable() || !Exists(paths::kInfo)) {
    return true;
  }
  LOG_ERROR("%s:%d Failed to rename the setting of %s", names.now.c_str());
  return false;
}

// The port has its new name, and goes on under it whatever becomes of what the old name had.
void DropOldNames(const Names& names) {
  const std::string key = model::MtuKey(names.now);
  if (ReadKey(paths::kInfo, key.c_str(), 16).Found() && !DropKey(paths::kInfo, key.c_str()))
    LOG_ERROR("%s:%d Failed to remove the setting of %s", names.now.c_str());
  const std::string path = paths::Ifcfg(names.now);
  if (Exists(path) && ::unlink(path.c_str()) != 0)
    LOG_ERROR("%s:%d Failed to remove %s.", path.c_str());
}

// ---- the kernel

// Gives an interface that does not come up under its new name the old one again. True when that
// was done.
bool TakeBack(const InetSocket& socket, const Names& names, short flags) {
  if (!socket.Rename(names.next, names.now)) return false;
  static_cast<void>(socket.SetFlags(names.now, flags));  // nothing more can be done about it
  return true;
}

// The kernel renames an interface only while it is down. Whatever happens it is up again
// afterwards, if it was.
bool RenameInKernel(const InetSocket& socket, const Names& names) {
  const auto flags = socket.Flags(names.now);
  if (!flags) return false;
  const bool isUp = (*flags & IFF_UP) != 0;
  const auto down = static_cast<short>(*flags & ~IFF_UP);
  if (isUp && !socket.SetFlags(names.now, down)) return false;
  const bool isRenamed = socket.Rename(names.now, names.next);
  const int error = errno;
  const std::string& ifname = isRenamed ? names.next : names.now;
  if (isUp && !socket.SetFlags(ifname, *flags)) {
    LOG_ERROR("%s:%d Failed to bring up %s. %m", ifname.c_str());
    return isRenamed && !TakeBack(socket, names, *flags);
  }
  errno = error;
  return isRenamed;
}

// The call that was killed may have left the port down.
void BringUpAtBoot(const InetSocket& socket, const std::string& ifname) {
  const auto flags = socket.Flags(ifname);
  if (!flags || !KeyIs(paths::Ifcfg(ifname), keys::kOnBoot, "yes")) return;
  if (!socket.SetFlags(ifname, static_cast<short>(*flags | IFF_UP)))
    LOG_ERROR("%s:%d Failed to bring up %s. %m", ifname.c_str());
}

// ---- the whole

bool Rename(const InetSocket& socket, const Names& names, Progress progress) {
  const bool isAhead = progress != Progress::kKernel;
  Undo undo;
  if (isAhead && !MakeNewFile(names, &undo)) return false;
  const Lock lock(kSettingsWrite);
  if (!lock.HeldOrLog()) return false;
  std::optional<Backup> settings;
  if (!MakeNewSetting(names, &settings)) return false;
  if (isAhead && !RenameInKernel(socket, names)) {
    LOG_ERROR("%s:%d Failed to rename %s to %s. %m", names.now.c_str(), names.next.c_str());
    return Fail(ZARNNETERR_REFUSED, false);
  }
  undo.Keep();
  if (progress != Progress::kNone) BringUpAtBoot(socket, names.next);
  if (settings && !settings->Remove())
    LOG_ERROR("%s:%d Failed to remove %s.", settings->CopyName().c_str());
  DropOldNames(names);
  return true;
}

// The client of the old name would go on under it.
int RenameWithClient(const InetSocket& socket, const Names& names, Progress progress,
                     const Place& at) {
  const bool onDhcp = KeyIs(paths::Ifcfg(names.now), keys::kBootProto, model::kDhcp);
  if (onDhcp) interfaces::StopDhcpClient(names.now, at);
  const bool isRenamed = Rename(socket, names, progress);
  if (onDhcp) {
    ::unlink(paths::DhcpInfo(names.now).c_str());  // the client writes one for the name it gets
    // The port keeps its new name without a client, too: the code tells of it.
    static_cast<void>(interfaces::StartDhcpClient(isRenamed ? names.next : names.now, at));
  }
  return isRenamed ? 0 : -1;
}

}  // namespace

int ZARNNetRenameEth(const char* szOld, const char* szNew) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (!IsPortName(szOld) || !IsPortName(szNew)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const Lock lock(kNetworkWrite);
    if (!lock.HeldOrLog()) return -1;
    const InetSocket socket;
    if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, -1);
    const Names names{szOld, szNew};
    const auto progress = Examine(socket, names);
    if (!progress) return -1;
    return ipv4::WhileRenaming(ipv4::Renamed::kPort, {names.now}, {names.next},
                               [&] { return RenameWithClient(socket, names, *progress, at); });
  });
}
