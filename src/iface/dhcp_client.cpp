// SPDX-License-Identifier: Apache-2.0
// The DHCP client of an interface, which is a job of the appliance.
#include "iface/dhcp_client.h"

#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

namespace {

constexpr char kJob[] = "dhcp-client";

std::string InstanceOf(const std::string& ifname) {
  return "IFACE=" + ifname;
}

}  // namespace

void interfaces::StopDhcpClient(const std::string& ifname, const Place& at) {
  if (!Run(paths::kStop, kJob, InstanceOf(ifname)))
    LOG_ERROR_AT(at, "%s:%d unable to stop dhcp-client instance on %s", ifname.c_str());
}

bool interfaces::StartDhcpClient(const std::string& ifname, const Place& at) {
  if (Run(paths::kStart, kJob, InstanceOf(ifname))) return true;
  LOG_ERROR_FUNC(at, "%s(%d) unable to start dhcp-client instance on %s", ifname.c_str());
  return Fail(ZARNNETERR_COMMAND, false, at);
}
