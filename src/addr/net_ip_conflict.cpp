// SPDX-License-Identifier: Apache-2.0
// Whether another host of the network uses an address already, asked before an interface gets it.
#include <string>
#include <vector>

#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"
#include "frame/facts/net_dev.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/containers.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

using Macs = std::vector<std::string>;

constexpr int kNoConflict = 0;
constexpr int kConflict = 1;
constexpr int kBadArguments = 2;
constexpr int kNotRun = -1;

constexpr std::size_t kMaxOwnPorts = 16;
constexpr std::size_t kMaxArgument = 45;  // an IPv6 address as text at its longest
constexpr char kProbe[] = "IpConflictDetectInternal";

void AddMacOf(const std::string& port, const InetSocket& socket, Macs* macs) {
  const auto mac = socket.HardwareAddress(port);
  if (!mac) {
    LOG_ERROR("%s:%d Failed to get MAC address for %s", port.c_str());
    return;
  }
  const auto& byte = *mac;
  macs->push_back(
      Format("%02x%02x%02x%02x%02x%02x", byte[0], byte[1], byte[2], byte[3], byte[4], byte[5]));
}

// A host with several cables in one network hears itself: the tool is told whom not to listen to.
Macs OwnMacs() {
  Macs macs;
  if (KeyIs(paths::kInfo, "arp_ignore", "yes")) return macs;
  const auto names = facts::ListNetDev();
  if (!names) return macs;
  const InetSocket socket;
  for (const std::string& name : *names) {
    if (!name.starts_with("eth")) continue;
    if (macs.size() == kMaxOwnPorts) {
      LOG_WARN(
          "%s:%d There are over the maximum number (%d) support of physical interfaces for IP "
          "conflict detection.",
          static_cast<int>(kMaxOwnPorts));
      break;
    }
    AddMacOf(name, socket, &macs);
  }
  return macs;
}

// The address to ask for at an interface: the given one, or else its own. Where there is none to
// ask for that is logged, and the answer is empty.
std::string AddressFor(const std::string& ifname, const char* given) {
  std::string address = given != nullptr ? given : "";
  if (given == nullptr) {
    const auto own = facts::KernelAddress(ifname);
    if (!own) {
      LOG_ERROR("%s:%d %s(%d) ZARNILnxGetIP failed.(%X)", kProbe, __LINE__, KOPACErrGet());
      return {};
    }
    address = DottedText(*own);
  }
  if (IsHostAddress(address)) return address;
  LOG_ERROR("%s:%d [%s] is not a valid IP address for %s", address.c_str(), ifname.c_str());
  return {};
}

int RunArping(const std::string& ifname, const std::string& address, const Macs& macs) {
  const std::string port = ifname.substr(0, kMaxArgument);
  const std::string target = address.substr(0, kMaxArgument);
  std::vector<const char*> arguments = {paths::kArping, "-D", "-q", "-w",         "3",
                                        "-c",           "3",  "-I", port.c_str(), target.c_str()};
  if (!macs.empty()) arguments.push_back("-F");
  for (const std::string& mac : macs)
    arguments.push_back(mac.c_str());
  arguments.push_back(nullptr);
  constexpr int kWait = 1;
  return KOPACExecv(paths::kArping, arguments.data(), kWait);
}

// Does another host answer?
bool IsInUse(const char* ifname, const char* address, const Macs& macs) {
  const bool unfit = IsUnfitName(ifname) || IsUnfitAddress(address);
  if (unfit) SetError(ZARNNETERR_BAD_PARAMETER);
  const int status = unfit ? kBadArguments : RunArping(ifname, address, macs);
  switch (status) {
    case kNoConflict:
      LOG_DETAIL("%s:%d %s is not conflict at %s", address, ifname);
      return false;
    case kConflict:
      return true;
    case kBadArguments:
      LOG_NOTE("%s:%d Invalid parameter to execute arping for %s at %s", address, ifname);
      return false;
    case kNotRun:
      LOG_ERROR("%s:%d Failed to execute arping for %s at %s", address, ifname);
      return false;
    default:
      LOG_ERROR("%s:%d Unknown return value [%d] from arping", status);
      return false;
  }
}

// 1 when any other host has one of the addresses, 0 when none has.
int Probe(const KOPACSZLIST* ifnames, const KOPACSZLIST* addresses, PFNIPCONFLICT tell) {
  const Macs macs = OwnMacs();
  int result = 0;
  for (int i = 0; i < ifnames->nItem; ++i) {
    const char* const ifname = KOPACSzListGet(ifnames, i);
    const char* const given = addresses != nullptr ? KOPACSzListGet(addresses, i) : nullptr;
    const std::string address = AddressFor(ifname, given);
    if (address.empty() || !IsInUse(ifname, address.c_str(), macs)) continue;
    result = 1;
    if (tell != nullptr) tell(ifname, address.c_str());
  }
  return result;
}

int ProbeOne(const char* ifname, const char* address) {
  constexpr int kCapacity = 128;
  StringList ifnames(kCapacity);
  StringList addresses(kCapacity);
  if (KOPACSzListPush(ifnames.Out(), ifname) < 0 || KOPACSzListPush(addresses.Out(), address) < 0) {
    LOG_ERROR("%s:%d Failed to settle parameters.");
    return -1;
  }
  return Probe(ifnames.Get(), addresses.Get(), nullptr);
}

}  // namespace

int IpConflictDetectInternal(const KOPACSZLIST* pIfnames, const KOPACSZLIST* pAddrs,
                             PFNIPCONFLICT pfnConflict) {
  return Boundary(-1, [&]() -> int {
    if (pIfnames == nullptr || (pAddrs != nullptr && pAddrs->nItem != pIfnames->nItem)) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return Probe(pIfnames, pAddrs, pfnConflict);
  });
}

int ZARNIIpConflict(const char* szIfname, const char* szAddr) {
  return Boundary(
      -1,
      [&]() -> int {
        if (IsUnfitName(szIfname) || IsUnfitAddress(szAddr))
          return Fail(ZARNNETERR_BAD_PARAMETER, -1);
        const auto own = facts::KernelAddress(szIfname);
        if (own && DottedText(*own) == szAddr) return 0;
        const int result = ProbeOne(szIfname, szAddr);
        if (result == 1) LOG_DETAIL_PLAIN("%s is conflict at %s", szAddr, szIfname);
        return result;
      },
      [&] { LOG_ERROR("%s:%d Failed to alloc list."); });
}
