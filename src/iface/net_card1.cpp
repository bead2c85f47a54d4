// SPDX-License-Identifier: Apache-2.0
// The primary interface: what the appliance is reached by when nobody names another. It is the
// first Ethernet port, or what covers it: a bond, a bridge, an Open vSwitch device.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <unistd.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/base/undo.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/ovs.h"
#include "frame/model/ifcfg.h"
#include "frame/model/ovs.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "iface/dhcp_client.h"
#include "iface/records.h"

using namespace frame;

namespace {

// The values of the record's boot protocol.
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

// What an interface is part of, and gives its address to; empty when it stands by itself.
std::string InterfaceOver(const std::string& ifname) {
  if (const auto bond = facts::OvsBonds().Of(ifname); bond && !bond->empty()) return *bond;
  return facts::IsUnderOvs(ifname) ? model::OvsDeviceOver(ifname) : MasterOf(ifname);
}

// A bond may be in a bridge, and so on; the kernel stacks no more than eight.
std::optional<std::string> Primary() {
  constexpr int kMostLayers = 8;
  auto ifname = FirstPort();
  for (int i = 0; ifname && i < kMostLayers; ++i) {
    const std::string upper = InterfaceOver(*ifname);
    if (upper.empty()) break;
    ifname = upper;
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
  return interfaces::ReadIpConfig(ifname, config);
}

// ---- writing

bool SetStatic(const std::string& ifname, const ZARNNETIFADDR& config) {
  const std::string ip(FieldText(config.szIP));
  const std::string mask(FieldText(config.szMask));
  for (const std::string& text : {ip, mask}) {
    if (!text.empty() && IsUnfitAddress(text.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  return IsHostAddress(ip) && ParseMask(mask) && ipv4::SetStatic(ifname, ip, mask);
}

bool WriteDhcp(const std::string& path, const std::string& ifname) {
  KeyEdit edit;
  edit.Set(keys::kDevice, ifname.c_str()).Set(keys::kOnBoot, "yes");
  model::SetLeasedAddress(&edit);
  model::LeaveBond(&edit);
  if (edit.WriteTo(path)) return true;
  LOG_ERROR("%s:%d Set %s error.", path.c_str());
  return false;
}

// The client gives the interface its address; the old one goes when the new one comes. On failure
// the file is as it was.
bool SetDhcp(const std::string& ifname, const Place& at) {
  const std::string path = paths::Ifcfg(ifname);
  const bool isThere = Exists(path);
  Undo undo;
  if (!isThere) undo.Add([&] { ::unlink(path.c_str()); });
  Backup backup(path, model::ChangeSuffix());
  if (isThere && !backup.Made()) {
    LOG_ERROR("%s:%d Failed to copy %s.", path.c_str());
    return Fail(ZARNNETERR_COMMAND, false);
  }
  if (!WriteDhcp(path, ifname)) return false;
  interfaces::StopDhcpClient(ifname, at);
  if (!interfaces::StartDhcpClient(ifname, at)) return false;
  undo.Keep();
  if (!backup.Remove()) LOG_ERROR("%s:%d Failed to remove %s.", backup.CopyName().c_str());
  return true;
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
    if (!ifname) return -1;
    const auto info = interfaces::ReadKernelRecord(*ifname);
    ZARNNETIFADDR config{};
    if (!info || !ReadConfig(*ifname, &config)) return -1;
    *pInfo = *info;
    *pConfig = config;
    return 0;
  });
}

int ZARNNetSetCard1(const ZARNNETIFADDR* pConfig) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (pConfig == nullptr || (pConfig->bootProto != kDhcp && pConfig->bootProto != kStatic))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto ifname = Primary();
    if (!ifname) return -1;
    const std::string_view meant = FieldText(pConfig->szName);
    if (!meant.empty() && meant != *ifname) return Fail(ZARNNETERR_NOT_FOUND, -1);
    const Lock lock(kNetworkWrite);
    if (!lock.HeldOrLog()) return -1;
    const bool isSet =
        pConfig->bootProto == kStatic ? SetStatic(*ifname, *pConfig) : SetDhcp(*ifname, at);
    return isSet ? 0 : -1;
  });
}
