/* SPDX-License-Identifier: Apache-2.0 */
// What the subsystems offer each other inside: the steps that are part of another subsystem's
// change. Not installed. What only reads is asked of frame/facts. The arrows: virtual -> pppoe,
// dhcpd, ipv4; iface, dns_route, ipv6, addr -> ipv4, dhcpd; ipv4 -> dhcpd. A step that answers
// false or nothing has logged it and set a code, as the exported function of the same work does.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <zarncore/zarncore.h>

#include "frame/base/place.h"

namespace dhcpd {

// Does the interface take its address by DHCP? A file without BOOTPROTO is repaired on the way.
bool IsDhcp(const std::string& ifname);

// Moves what the DHCP server has of an interface to another name.
bool MoveInterface(const std::string& oldName, const std::string& newName);

bool RestartServer();

}  // namespace dhcpd

namespace ipv4 {

// Gives the interface a fixed address, in its file and in the kernel.
bool SetStatic(const std::string& ifname, const std::string& ip, const std::string& netmask);

// The configured address: of the lease on DHCP, of the interface's file otherwise; empty without
// one.
std::optional<std::string> ConfiguredAddress(const std::string& ifname);

// One IPv6 address, added to or deleted from the running kernel.
bool SetV6Address(const std::string& ifname, const std::string& ip, unsigned prefix, bool add);

// Switches IPv6 off or on for one interface, and waits until its link-local address is in use. An
// interface that is not switched, such as a bond, counts as done.
bool SwitchV6(const std::string& ifname, bool on);

// The stored MTU as text, "1500" when none is stored.
std::optional<std::string> StoredMtu(const std::string& ifname);
bool StoreMtu(const std::string& ifname, const std::string& mtu);

// Tells of a change of the name servers, before and after: `stage` is a ZARNNETSTAGE_...
bool TellDnsChange(int stage, const KOPACSZLIST* servers);
bool TellDnsConfigChange(int stage, const char* ifname, const KOPACSZLIST* servers);

// What takes new names: it decides the lines that tell of a failed event, and whether the work is
// done where the event cannot even be begun. A port's is; the others end with -1.
enum class Renamed { kVlan, kBond, kPort };

// Tells those who follow the names, before the work and after it, that interfaces take other
// interfaces' places; answers what the work answers. A failure of the event is logged in the
// caller's name, stops nothing and leaves the code of the work alone. Work that runs out of memory
// ends with -1 and ZARNNETERR_NO_MEMORY.
int WhileRenaming(Renamed what, const std::vector<std::string>& oldNames,
                  const std::vector<std::string>& newNames, const std::function<int()>& work,
                  const frame::Place& at = {});

}  // namespace ipv4

namespace pppoe {

// Switches PPPoE off when it runs over this interface.
bool DisableOn(const std::string& ifname);

}  // namespace pppoe
