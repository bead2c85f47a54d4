// The primary interface: what the appliance is reached by when nobody names another. It is the
// first Ethernet port, or what covers it: a bond, a bridge, an Open vSwitch device.
#include <algorithm>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <unistd.h>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/ovs.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/command.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

constexpr std::int32_t kDhcp = 0;
constexpr std::int32_t kStatic = 1;

// ---- which it is

// A VLAN ("eth0.10") is no port.
std::optional<std::string> FirstPort() {
  const auto names = facts::ListNetDev();
  if (!names) return std::nullopt;
  const auto port = std::find_if(names->begin(), names->end(), [](const std::string& name) {
    return name.starts_with("eth") && name.find('.') == std::string::npos;
  });
  if (port == names->end()) return Fail(ZARNNETERR_NOT_FOUND, std::nullopt);
  return *port;
}

// The bond or bridge of the kernel that an interface is in; empty without one. That of Open vSwitch
// is its data path, which holds no address.
std::string MasterOf(const std::string& ifname) {
  char link[256] = "";
  const ssize_t length =
      ::readlink(paths::SysNet(ifname, "/master").c_str(), link, sizeof link - 1);
  if (length <= 0) return {};
  const std::string_view target(link, static_cast<std::size_t>(length));
  const std::string_view name = target.substr(target.rfind('/') + 1);
  return name.starts_with("ovs-") ? std::string() : std::string(name);
}

std::string CoverOf(const std::string& ifname) {
  if (const auto bond = facts::OvsBondOf(ifname); bond && !bond->empty()) return *bond;
  std::string device = "ovs_" + ifname;
  if (Exists(paths::SysVirtualNet(device))) return device;
  return MasterOf(ifname);
}

// A bond may be in a bridge, and so on; the kernel stacks no more than eight.
std::optional<std::string> Primary() {
  constexpr int kMostCovers = 8;
  auto ifname = FirstPort();
  for (int i = 0; ifname && i < kMostCovers; ++i) {
    const std::string cover = CoverOf(*ifname);
    if (cover.empty()) break;
    ifname = cover;
  }
  if (!ifname) {
    const InnerError inner;
    LOG_ERROR("%s:%d No Ethernet port [0x%04X %s:%d]", inner.code, inner.file, inner.line);
  }
  return ifname;
}

// ---- reading

bool ReadConfig(const std::string& ifname, ZARNNETIFADDR* config) {
  CopyText(ifname, config->szName);
  if (const auto mac = InetSocket().HardwareAddress(ifname))
    std::memcpy(config->rgMac, mac->data(), mac->size());
  return ZARNNetIFGetIPConfig(ifname.c_str(), config) == 0;
}

// ---- writing

int SetStatic(const std::string& ifname, const ZARNNETIFADDR& config) {
  const std::string ip(FieldText(config.szIP));
  const std::string mask(FieldText(config.szMask));
  if (BlKOPAIsIpAddr(ip.c_str()) != 1 || BlKOPAIsValidIpMask(mask.c_str()) != 1)
    return Fail(ZARNNETERR_MALFORMED_ADDRESS, -1);
  return ZARNILnxSetIPNetmask(ifname.c_str(), ip.c_str(), mask.c_str());
}

bool WriteDhcp(const std::string& path, const std::string& ifname) {
  return KeyEdit()
      .Set(keys::kDevice, ifname.c_str())
      .Set(keys::kOnBoot, "yes")
      .Set(keys::kBootProto, "dhcp")
      .Drop(keys::kIpAddr)
      .Drop(keys::kNetmask)
      .WriteTo(path);
}

// The client gives the interface its address; the old one goes when the new one comes.
int WriteAndStartDhcp(const std::string& path, const std::string& ifname) {
  if (!WriteDhcp(path, ifname)) {
    LOG_ERROR("%s:%d Set %s error.", path.c_str());
    return Fail(ZARNNETERR_WRITE, -1);
  }
  const std::string instance = "IFACE=" + ifname;
  // One that does not run cannot be stopped.
  static_cast<void>(Run(paths::kStop, "dhcp-client", instance));
  if (!Run(paths::kStart, "dhcp-client", instance)) {
    LOG_ERROR("%s:%d unable to start dhcp-client instance on %s", ifname.c_str());
    return Fail(ZARNNETERR_COMMAND, -1);
  }
  return 0;
}

int SetDhcp(const std::string& ifname) {
  const std::string path = paths::Ifcfg(ifname);
  const bool isNew = !Exists(path);
  Backup backup(path, Format(".tmp%ld", static_cast<long>(std::time(nullptr))));
  if (!isNew && !backup.Made()) {
    LOG_ERROR("%s:%d Failed to copy %s.", path.c_str());
    return Fail(ZARNNETERR_COMMAND, -1);
  }
  const int result = WriteAndStartDhcp(path, ifname);
  if (result < 0) {
    if (isNew) ::unlink(path.c_str());
    return result;  // the copy takes the place of the file
  }
  if (!backup.Remove()) LOG_ERROR("%s:%d Failed to remove %s.", backup.CopyName().c_str());
  return 0;
}

}  // namespace

int ZARNNetGetCard1(ZARNNETIFADDR* pConfig) {
  return Boundary(-1, [&]() -> int {
    if (pConfig == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto ifname = Primary();
    ZARNNETIFADDR config{};
    if (!ifname || !ReadConfig(*ifname, &config)) return -1;
    *pConfig = config;
    return 0;
  });
}

int ZARNNetGetCard1Ex(KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig) {
  return Boundary(-1, [&]() -> int {
    if (pInfo == nullptr || pConfig == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto ifname = Primary();
    KOPANetIfInfo info{};
    ZARNNETIFADDR config{};
    if (!ifname || ZARNNetIFGetInfo(ifname->c_str(), &info) < 0 || !ReadConfig(*ifname, &config))
      return -1;
    *pInfo = info;
    *pConfig = config;
    return 0;
  });
}

int ZARNNetSetCard1(const ZARNNETIFADDR* pConfig) {
  return Boundary(-1, [&]() -> int {
    if (pConfig == nullptr || (pConfig->bootProto != kDhcp && pConfig->bootProto != kStatic))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto ifname = Primary();
    if (!ifname) return -1;
    const std::string_view meant = FieldText(pConfig->szName);
    if (!meant.empty() && meant != *ifname) return Fail(ZARNNETERR_NOT_FOUND, -1);
    const Lock lock(kNetworkWrite);
    if (!lock.Held()) {
      const InnerError inner;
      LOG_ERROR("%s:%d KOPACFileLock failed.[0x%04X %s:%d]", inner.code, inner.file, inner.line);
      return Fail(ZARNNETERR_LOCK, -1);
    }
    return pConfig->bootProto == kStatic ? SetStatic(*ifname, *pConfig) : SetDhcp(*ifname);
  });
}
