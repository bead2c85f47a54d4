// SPDX-License-Identifier: Apache-2.0
// The DHCP client of an interface, which is a job of the appliance.
#pragma once

#include <string>

#include "frame/base/place.h"

// Not "iface", as the folder: <net/if.h> declares a struct of that name.
namespace interfaces {

// One that does not stop is logged in the caller's name; it may not have run.
void StopDhcpClient(const std::string& ifname, const frame::Place& at);

// One that does not start is 0x2A00, and logged with the caller's function.
bool StartDhcpClient(const std::string& ifname, const frame::Place& at);

}  // namespace interfaces
