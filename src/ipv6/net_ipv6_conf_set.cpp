// SPDX-License-Identifier: Apache-2.0
// Configures IPv6 on an interface: its file, the kernel's switch, the DHCPv6 client, the fixed
// address and route. When a step fails everything is as it was.
#include <algorithm>
#include <cstdlib>
#include <linux/if_addr.h>
#include <optional>
#include <string>
#include <unistd.h>

#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/base/undo.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/backup.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "frame/os/shared_folder.h"
#include "frame/os/wait.h"
#include "ipv6/accept_ra.h"
#include "ipv6/config.h"
#include "ipv6/fixed_address.h"
#include "ipv6/ip_action.h"

using namespace frame;

namespace {

// ---- what is asked for

// What the caller asks for, checked; an absent text is empty.
struct Request {
  std::string ifname;
  int type;
  std::string address;
  int prefix;
  std::string gateway;

  [[nodiscard]] bool IsStatic() const { return type == ZARNNET_IPV6_STATIC; }
  [[nodiscard]] bool UsesAdvertisements() const {
    return type == ZARNNET_IPV6_AUTO || type == ZARNNET_IPV6_AUTO_DHCP;
  }
  [[nodiscard]] bool UsesDhcp() const {
    return type == ZARNNET_IPV6_DHCP || type == ZARNNET_IPV6_AUTO_DHCP;
  }
};

// The text as the kernel prints it; nothing when it is no IPv6 address.
std::optional<std::string> KernelText(const std::string& address) {
  const auto parsed = ParseIpv6(address);
  if (!parsed) return std::nullopt;
  return Ipv6Text(*parsed);
}

bool IsLegal(const std::string& address, bool required) {
  if (address.empty() && !required) return true;
  if (KernelText(address)) return true;
  LOG_ERROR("%s:%d IPv6 address illegal %s", address.c_str());
  return false;
}

bool IsSensible(const Request& request) {
  if (IsUnfitName(request.ifname.c_str()) || request.type < 0 || request.type >= ipv6::kTypes ||
      request.prefix < 0 || request.prefix > static_cast<int>(ipv6::kMaxPrefix)) {
    LOG_ERROR("%s:%d Bad parameters.");
    return false;
  }
  return IsLegal(request.address, request.IsStatic()) && IsLegal(request.gateway, false);
}

ipv6::Fixed WantedFixed(const Request& request) {
  if (!request.IsStatic()) return {};
  return {*KernelText(request.address), static_cast<unsigned>(request.prefix),
          KernelText(request.gateway).value_or("")};
}

// ---- the file

// What the configuration in force has put on the interface.
ipv6::Fixed FormerFixed(const std::string& path) {
  constexpr std::size_t kSize = 64;
  const KeyValue type = ReadKey(path, keys::kIpv6Type, kSize);
  if (ipv6::TypeOf(type.text) != ZARNNET_IPV6_STATIC) return {};
  return {KernelText(ReadKey(path, keys::kIpv6Address, kSize).text).value_or(""),
          static_cast<unsigned>(std::atoi(ReadKey(path, keys::kIpv6Prefix, kSize).text.c_str())),
          KernelText(ReadKey(path, keys::kIpv6Gateway, kSize).text).value_or("")};
}

// A key that the type does not use is dropped. The switch goes into the file too: start-up sets it
// from there.
bool WriteKeys(const std::string& path, const Request& request) {
  const std::string prefix = Format("%d", request.prefix);
  KeyEdit edit;
  const auto put = [&](const char* key, const std::string& value) {
    if (request.IsStatic() && !value.empty()) {
      edit.Set(key, value.c_str());
    } else {
      edit.Drop(key);
    }
  };
  edit.Set(keys::kIpv6Type, ipv6::kTypeTexts[request.type]);
  edit.Set(keys::kIpv6AcceptRa, request.UsesAdvertisements() ? "1" : "0");
  put(keys::kIpv6Address, request.address);
  put(keys::kIpv6Prefix, prefix);
  put(keys::kIpv6Gateway, request.gateway);
  if (edit.WriteTo(path)) return true;
  LOG_ERROR("%s:%d Set %s error.", path.c_str());
  return false;
}

// Copies the file, so that it can be put back. Without a copy of a file that is there nothing may
// be changed.
bool Save(const std::string& path, std::optional<Backup>* copy) {
  if (!Exists(path)) return true;
  copy->emplace(path, model::ChangeSuffix());
  if ((*copy)->Made()) return true;
  LOG_ERROR("%s:%d copy (%s, %s) failed.", path.c_str(), (*copy)->CopyName().c_str());
  return Fail(ZARNNETERR_COMMAND, false);
}

void PutBack(const std::string& path, std::optional<Backup>* copy) {
  const bool back = *copy ? (*copy)->Restore() : ::unlink(path.c_str()) == 0 || !Exists(path);
  if (!back) LOG_ERROR("%s:%d Failed to restore %s", path.c_str());
}

// ---- router advertisements

bool SwitchAdvertisements(const Request& request, Undo* undo) {
  const bool accept = request.UsesAdvertisements();
  const auto before = ipv6::ReadAcceptRa(request.ifname);
  if (!ipv6::WriteAcceptRa(request.ifname, accept ? ipv6::kAcceptRa : ipv6::kIgnoreRa)) {
    if (accept) {
      LOG_ERROR("%s:%d Failed to enable ipv6 accept_ra");
    } else {
      LOG_ERROR("%s:%d Failed to disable ipv6 accept_ra");
    }
    return false;
  }
  if (before) {
    undo->Add([=] { static_cast<void>(ipv6::WriteAcceptRa(request.ifname, *before)); });
  }
  return true;
}

// ---- the kernel's switch

// A flush of an interface that was "off" leaves IPv6 switched off, and no address could be given
// then.
bool SwitchOn(const Request& request) {
  if (request.type == ZARNNET_IPV6_OFF) return true;
  LineReader lines(paths::Ipv6Switch(request.ifname));
  const auto line = lines.IsOpen() ? lines.Next() : std::nullopt;
  if (!line || Trimmed(*line) != "1") return true;
  if (ipv4::SwitchV6(request.ifname, true)) return true;
  LOG_ERROR("%s:%d Failed to enable IPv6 on [%s]", request.ifname.c_str());
  return false;
}

// ---- the DHCPv6 client

constexpr char kClientJob[] = "dhcp-client6";
constexpr char kStartAction[] = "start";
constexpr char kStopAction[] = "stop";

bool IsClientRunning(const std::string& ifname) {
  const std::string path = paths::Dhcp6Pid(ifname, kStartAction);
  if (!IsTrustedFile(path)) return false;
  char name[64];
  const int pid = KOPACReadPidFile(path.c_str());
  return pid > 0 && KOPACProcGetByPid(pid, name, sizeof name) == 0;
}

bool TellClient(const char* program, const std::string& ifname, const char* action) {
  return Run(program, kClientJob, Format("IFACE=%s", ifname.c_str()), Format("ACTION=%s", action));
}

bool StartClient(const std::string& ifname, Undo* undo) {
  if (IsClientRunning(ifname)) {
    LOG_ERROR("%s:%d DHCPv6 already running!");
    return true;
  }
  if (!TellClient(paths::kStart, ifname, kStartAction)) {
    LOG_ERROR("%s:%d Failed to start dhclient on interface [%s]", ifname.c_str());
    return Fail(ZARNNETERR_COMMAND, false);
  }
  undo->Add([=] { static_cast<void>(TellClient(paths::kStop, ifname, kStopAction)); });
  return true;
}

// The job refuses to stop what does not run: only a client that lives on is a failure.
bool StopClient(const std::string& ifname, Undo* undo) {
  const bool ran = IsClientRunning(ifname);
  if (!TellClient(paths::kStop, ifname, kStopAction) && IsClientRunning(ifname)) {
    LOG_ERROR("%s:%d Failed to stop dhclient on interface [%s]", ifname.c_str());
    return Fail(ZARNNETERR_COMMAND, false);
  }
  if (ran) undo->Add([=] { static_cast<void>(TellClient(paths::kStart, ifname, kStartAction)); });
  return true;
}

// ---- duplicate addresses

bool IsBeingProbed(const std::string& ifname) {
  const auto flags = InetSocket().Flags(ifname);
  if (!flags || (*flags & IFF_RUNNING) == 0) return false;  // without carrier nothing is probed
  const auto addresses = ipv6::AddressesOf(ifname);
  return std::any_of(addresses.begin(), addresses.end(), [](const ZARNNETV6ADDR& address) {
    return (address.flags & (IFA_F_TENTATIVE | IFA_F_DADFAILED)) == IFA_F_TENTATIVE;
  });
}

bool RemoveDuplicates(const std::string& ifname) {
  WaitWhile([&] { return IsBeingProbed(ifname); });
  for (const ZARNNETV6ADDR& address : ipv6::AddressesOf(ifname)) {
    if ((address.flags & IFA_F_DADFAILED) == 0) continue;
    LOG_ERROR("%s:%d ipv6 dad fail, ip:%s, pxleng:%d", address.szAddr,
              static_cast<int>(address.prefix));
    if (!ipv6::ChangeAddress(ipv6::Change::kDelete, ifname, address.szAddr, address.prefix)) {
      LOG_ERROR("%s:%d failed to run ipv6 dad failed ip");
      return false;
    }
  }
  return true;
}

// ---- all of it

bool Apply(const Request& request, const ipv6::Fixed& former, Undo* undo) {
  if (!SwitchAdvertisements(request, undo) || !SwitchOn(request)) return false;
  const bool client =
      request.UsesDhcp() ? StartClient(request.ifname, undo) : StopClient(request.ifname, undo);
  return client && ipv6::Move(request.ifname, former, WantedFixed(request), undo) &&
         RemoveDuplicates(request.ifname);
}

bool Configure(const Request& request) {
  // Not the network lock: the client's scripts and the event's plugins take that one while this
  // call waits.
  const std::string path = paths::Ifcfg(request.ifname);
  const FileLock lock(path);
  if (!lock.HeldOrLog()) return false;
  const ipv6::Fixed former = FormerFixed(path);
  std::optional<Backup> copy;
  if (!Save(path, &copy)) return false;
  Undo undo;
  undo.Add([&] { PutBack(path, &copy); });
  if (!WriteKeys(path, request) || !Apply(request, former, &undo)) return false;
  undo.Keep();
  if (copy && !copy->Remove()) LOG_ERROR("%s:%d Failed to remove %s", copy->CopyName().c_str());
  return true;
}

std::string TextOf(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

int ZARNNetIPv6ConfSet(const char* szIfname, int type, const char* szAddr, int prefix,
                       const char* szGateway) {
  return Boundary(-1, [&]() -> int {
    const Request request{TextOf(szIfname), type, TextOf(szAddr), prefix, TextOf(szGateway)};
    if (!IsSensible(request)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return Configure(request) ? 0 : -1;
  });
}
