// A bond's interface file goes: its settings pass to one of its slaves, and all of them become
// interfaces of their own.
#include <glob.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

using Names = std::vector<std::string>;

constexpr std::size_t kNameSize = sizeof(ZARNLINKAGGROPT::szName);

class FileNames {
 public:
  FileNames() : failed_(glob(Pattern().c_str(), GLOB_ERR, nullptr, &found_) != 0) {}
  ~FileNames() { globfree(&found_); }
  FileNames(const FileNames&) = delete;
  FileNames& operator=(const FileNames&) = delete;
  [[nodiscard]] bool Failed() const { return failed_; }
  [[nodiscard]] char** begin() const { return found_.gl_pathv; }
  [[nodiscard]] char** end() const { return found_.gl_pathv + found_.gl_pathc; }

 private:
  static std::string Pattern() { return Format("%s/*", paths::kIfcfgFolder); }
  glob_t found_{};
  bool failed_;
};

// Puts the slaves' files back unless the bond is gone in the end.
class SlaveFiles {
 public:
  explicit SlaveFiles(const Names& slaves) : slaves_(slaves) {}
  ~SlaveFiles() {
    if (!kept_) Restore();
  }
  SlaveFiles(const SlaveFiles&) = delete;
  SlaveFiles& operator=(const SlaveFiles&) = delete;
  void Keep() { kept_ = true; }

 private:
  void Restore() const {
    for (const std::string& slave : slaves_) {
      const std::string path = paths::Ifcfg(slave);
      static_cast<void>(RunStatus(paths::kMv, "-f", path + model::kSavedSuffix, path));
    }
  }
  const Names& slaves_;
  bool kept_ = false;
};

bool AddDeviceOf(const char* path, Names* slaves) {
  const KeyValue device = ReadKey(path, keys::kDevice, kNameSize);
  if (device.length == 0) {
    LOG_ERROR("%s:%d %s don't have key \"DEVICE\"\n", path);
    return false;
  }
  if (device.Unreadable() || IsUnfitName(device.text.c_str())) {
    LOG_ERROR("%s:%d get key \"DEVICE\" from %s fail\n", path);
    return false;
  }
  slaves->push_back(device.text);
  return true;
}

bool AddIfSlave(const char* path, const std::string& bond, Names* slaves) {
  const KeyValue master = ReadKey(path, keys::kMaster, kNameSize);
  if (master.Unreadable()) {
    LOG_ERROR("%s:%d get key \"MASTER\" from %s fail\n", path);
    return false;
  }
  return master.text != bond || AddDeviceOf(path, slaves);
}

// The interfaces whose files name the bond as their master. Backups are no interfaces' files.
std::optional<Names> ParseSlaves(const std::string& bond) {
  Names slaves;
  const FileNames files;
  if (files.Failed()) return Fail(ZARNNETERR_OPEN, std::nullopt);
  for (const char* path : files) {
    if (std::string_view(path).ends_with(model::kSavedSuffix)) continue;
    if (!AddIfSlave(path, bond, &slaves)) return std::nullopt;
  }
  return slaves;
}

std::string HeirOf(const ZARNLINKAGGROPT& record, const Names& slaves) {
  if (record.cSlave > 0) return std::string(FieldText(record.rgszSlave[0]));
  return slaves.empty() ? std::string() : slaves.front();
}

std::string AddressOfBond(const std::string& bond) {
  char address[64] = "";
  if (ZARNILnxGetIPFromCfg(bond.c_str(), address, sizeof address) >= 0) return address;
  LOG_ERROR("%s:%d get IP of %s failed", bond.c_str());
  return {};
}

// Does the slave carry this address? Nothing when its own cannot be read.
std::optional<bool> HasAddress(const std::string& slave, const std::string& address) {
  char own[64] = "";
  if (ZARNILnxGetIPFromCfg(slave.c_str(), own, sizeof own) >= 0) return address == own;
  LOG_ERROR("%s:%d get IP on %s failed", slave.c_str());
  return std::nullopt;
}

bool TakeAddress(const std::string& slave) {
  const std::string path = paths::Ifcfg(slave);
  if (KOPACFileSetKeyValue(path.c_str(), keys::kBootProto, "none", kBareLine) >= 0) return true;
  LOG_ERROR("%s:%d set %s %s=%s failed", path.c_str(), keys::kBootProto, "none");
  return false;
}

bool ReleaseSlave(const std::string& slave) {
  return ZARNNetLinkAggrConfSetSlave(slave.c_str(), 0, nullptr) == 0;
}

// The bond's address lives on at the heir alone. The release makes "none" a "dhcp", so that it is
// written behind it once more.
bool ReleaseWithoutAddress(const std::string& slave) {
  return TakeAddress(slave) && ReleaseSlave(slave) && TakeAddress(slave);
}

bool ReleaseAll(const Names& slaves, const std::string& heir, const std::string& address) {
  for (const std::string& slave : slaves) {
    bool shared = false;
    if (!address.empty() && !heir.empty() && slave != heir) {
      const auto has = HasAddress(slave, address);
      if (!has) return false;
      shared = *has;
    }
    if (!(shared ? ReleaseWithoutAddress(slave) : ReleaseSlave(slave))) return false;
  }
  return true;
}

bool Inherit(const std::string& bondPath, const std::string& heir) {
  if (heir.empty()) return true;
  const std::string path = paths::Ifcfg(heir);
  if (RunStatus(paths::kCp, "-f", bondPath, path) == 0) return true;
  return Fail(ZARNNETERR_COMMAND, false);
}

}  // namespace

int ZARNNetLinkAggrConfDel(ZARNLINKAGGROPT* pOpt) {
  return Boundary(-1, [&]() -> int {
    if (pOpt == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string bond(FieldText(pOpt->szName));
    if (IsUnfitName(bond.c_str()) || !FitsKernel(bond)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto slaves = ParseSlaves(bond);
    if (!slaves) {
      LOG_ERROR("%s:%d parse slaves from etc/sysconfig/network-script\n");
      return -1;
    }
    const std::string heir = HeirOf(*pOpt, *slaves);
    if (pOpt->cSlave > 0 && IsUnfitName(heir.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(bond);
    SlaveFiles files(*slaves);
    if (!Inherit(path, heir)) return -1;
    if (!ReleaseAll(*slaves, heir, AddressOfBond(bond))) return -1;
    if (::unlink(path.c_str()) != 0) return -1;
    files.Keep();
    return 0;
  });
}
