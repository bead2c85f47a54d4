// SPDX-License-Identifier: Apache-2.0
// Start script and jobs, run by path and argument vector.
#include "record/programs.h"

#include <zarncore/zarncore.h>

#include "frame/model/paths.h"

namespace change {
namespace {

constexpr char kDhcpClient[] = "dhcp-client";

bool RunJob(const char* program, const std::string& ifname) {
  return KOPACExec(program, kDhcpClient, ("IFACE=" + ifname).c_str(), nullptr, nullptr) == 0;
}

}  // namespace

bool RunStartScript(const std::string& verb, const std::vector<std::string>& ifnames) {
  std::vector<const char*> arguments{frame::paths::kNetworkScript, verb.c_str()};
  for (const std::string& ifname : ifnames)
    arguments.push_back(ifname.c_str());
  arguments.push_back(nullptr);
  return KOPACExecv(frame::paths::kNetworkScript, arguments.data(), 1) == 0;
}

bool StartDhcpClient(const std::string& ifname) {
  return RunJob(frame::paths::kStart, ifname);
}

bool StopDhcpClient(const std::string& ifname) {
  return RunJob(frame::paths::kStop, ifname);
}

}  // namespace change
