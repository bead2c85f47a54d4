// Gives a port another name: in the kernel, in its file and in the settings. When a step fails
// everything is as it was.
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <net/if.h>
#include <optional>
#include <string>
#include <unistd.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/command.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

// ---- may it be renamed?

// The kernel makes a number of "%d", and keeps ":" for labels of addresses and "." and ".." for
// folders; "." also begins the id of a VLAN.
bool IsPortName(const char* name) {
  return !IsUnfitName(name) && FitsKernel(name) &&
         std::string_view(name).find_first_of("%:.") == std::string_view::npos;
}

// Bonds, bridges, Open vSwitch and VLANs know their ports by name, in files of their own.
bool IsBuiltUpon(const std::string& ifname) {
  StringList covers(4);
  return KOPACFileEnumDir(paths::SysNet(ifname, "").c_str(), "upper_", covers.Out(), 0) != 0 ||
         Exists(paths::SysVirtualNet("ovs_" + ifname));
}

bool MayRename(const InetSocket& socket, const char* ifname, const char* newName) {
  const auto flags = socket.Flags(ifname);
  // The socket knows an interface by its other names too; its files do not.
  if (!flags || (*flags & IFF_LOOPBACK) != 0 || !Exists(paths::SysNet(ifname, ""))) {
    LOG_ERROR("%s:%d No port %s", ifname);
    return Fail(ZARNNETERR_NOT_FOUND, false);
  }
  if (socket.Flags(newName) || Exists(paths::Ifcfg(newName))) {
    LOG_ERROR("%s:%d There is a %s already", newName);
    return Fail(ZARNNETERR_EXISTS, false);
  }
  if (IsBuiltUpon(ifname)) {
    LOG_ERROR("%s:%d %s is part of another interface", ifname);
    return Fail(ZARNNETERR_REFUSED, false);
  }
  return true;
}

// ---- the files

std::string BackupSuffix() {
  return Format(".tmp%ld", static_cast<long>(std::time(nullptr)));
}

// The interface's file under its new name. Without Keep() it gets its old name and content again.
class FileMove {
 public:
  FileMove(const char* ifname, const char* newName)
      : newPath_(paths::Ifcfg(newName)), exists_(Exists(paths::Ifcfg(ifname))) {
    if (!exists_) return;
    backup_.emplace(paths::Ifcfg(ifname), BackupSuffix());
    moved_ = backup_->Made() && std::rename(paths::Ifcfg(ifname).c_str(), newPath_.c_str()) == 0 &&
             KOPACFileSetKeyValue(newPath_.c_str(), keys::kDevice, newName, kBareLine) >= 0;
  }
  ~FileMove() {
    if (exists_ && !kept_) ::unlink(newPath_.c_str());  // the backup takes the old name again
  }
  FileMove(const FileMove&) = delete;
  FileMove& operator=(const FileMove&) = delete;

  [[nodiscard]] bool Done() const { return !exists_ || moved_; }
  void Keep() {
    kept_ = true;
    if (backup_ && !backup_->Remove())
      LOG_ERROR("%s:%d Failed to remove %s.", backup_->CopyName().c_str());
  }

 private:
  std::string newPath_;
  bool exists_;
  bool moved_ = false;
  bool kept_ = false;
  std::optional<Backup> backup_;
};

// The MTU under the new name. Without Keep() the settings are as they were.
class SettingMove {
 public:
  SettingMove(const char* ifname, const char* newName) {
    const std::string key = model::MtuKey(ifname);
    const KeyValue mtu = ReadKey(paths::kInfo, key.c_str(), 16);
    if (!mtu.Found()) return;
    backup_.emplace(paths::kInfo, BackupSuffix());
    StringHash set;
    StringHash drop;
    set.Set(model::MtuKey(newName).c_str(), mtu.text.c_str());
    drop.Set(key.c_str(), "");
    done_ =
        backup_->Made() && KOPACFileSetKeys(paths::kInfo, set.Get(), drop.Get(), kQuotedLine) >= 0;
  }

  [[nodiscard]] bool Done() const { return done_; }
  void Keep() {
    if (backup_ && !backup_->Remove())
      LOG_ERROR("%s:%d Failed to remove %s.", backup_->CopyName().c_str());
  }

 private:
  std::optional<Backup> backup_;
  bool done_ = true;
};

// ---- the kernel

// Gives an interface that does not come up under its new name the old one again. True when that
// was done.
bool TakeBack(const InetSocket& socket, const char* ifname, const char* newName, short flags) {
  if (!socket.Rename(newName, ifname)) return false;
  static_cast<void>(socket.SetFlags(ifname, flags));  // nothing more can be done about it
  return true;
}

// The kernel renames an interface only while it is down. Whatever happens it is up again
// afterwards, if it was.
bool RenameInKernel(const InetSocket& socket, const char* ifname, const char* newName) {
  const auto flags = socket.Flags(ifname);
  if (!flags) return false;
  const bool isUp = (*flags & IFF_UP) != 0;
  const auto down = static_cast<short>(*flags & ~IFF_UP);
  if (isUp && !socket.SetFlags(ifname, down)) return false;
  const bool renamed = socket.Rename(ifname, newName);
  const int error = errno;
  if (isUp && !socket.SetFlags(renamed ? newName : ifname, *flags)) {
    LOG_ERROR("%s:%d Failed to bring up %s. %m", renamed ? newName : ifname);
    return renamed && !TakeBack(socket, ifname, newName, *flags);
  }
  errno = error;
  return renamed;
}

// ---- those who follow the name

// The client of the old name would go on under it.
bool StopDhcpClient(const char* ifname) {
  return Run(paths::kStop, "dhcp-client", Format("IFACE=%s", ifname));
}
void StartDhcpClient(const char* ifname) {
  if (!Run(paths::kStart, "dhcp-client", Format("IFACE=%s", ifname)))
    LOG_ERROR("%s:%d unable to start dhcp-client instance on %s", ifname);
}

int Rename(const InetSocket& socket, const char* ifname, const char* newName) {
  FileMove file(ifname, newName);
  if (!file.Done()) {
    LOG_ERROR("%s:%d Failed to rename the file of %s. %m", ifname);
    return Fail(ZARNNETERR_RENAME, -1);
  }
  const Lock settings(kSettingsWrite);
  if (!settings.Held()) {
    const InnerError inner;
    LOG_ERROR("%s:%d Failed to lock zarninfo [0x%04X %s:%d]", inner.code, inner.file, inner.line);
    return Fail(ZARNNETERR_LOCK, -1);
  }
  SettingMove setting(ifname, newName);
  if (!setting.Done()) {
    LOG_ERROR("%s:%d Failed to rename the setting of %s", ifname);
    return Fail(ZARNNETERR_WRITE, -1);
  }
  if (!RenameInKernel(socket, ifname, newName)) {
    LOG_ERROR("%s:%d Failed to rename %s to %s. %m", ifname, newName);
    return Fail(ZARNNETERR_REFUSED, -1);
  }
  setting.Keep();
  file.Keep();
  return 0;
}

int RenameWithClient(const InetSocket& socket, const char* ifname, const char* newName) {
  const bool onDhcp =
      KeyIs(paths::Ifcfg(ifname), keys::kBootProto, "dhcp") && StopDhcpClient(ifname);
  const int result = Rename(socket, ifname, newName);
  if (onDhcp) {
    ::unlink(paths::DhcpInfo(ifname).c_str());  // the client writes one for the name it gets
    StartDhcpClient(result == 0 ? newName : ifname);
  }
  return result;
}

}  // namespace

int ZARNNetRenameEth(const char* szOld, const char* szNew) {
  return Boundary(-1, [&]() -> int {
    if (!IsPortName(szOld) || !IsPortName(szNew)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const Lock lock(kNetworkWrite);
    if (!lock.Held()) {
      const InnerError inner;
      LOG_ERROR("%s:%d KOPACFileLock failed.[0x%04X %s:%d]", inner.code, inner.file, inner.line);
      return Fail(ZARNNETERR_LOCK, -1);
    }
    const InetSocket socket;
    if (!MayRename(socket, szOld, szNew)) return -1;
    return ipv4::WhileRenaming(ipv4::Renamed::kPort, {szOld}, {szNew},
                               [&] { return RenameWithClient(socket, szOld, szNew); });
  });
}
