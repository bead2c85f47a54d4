// SPDX-License-Identifier: Apache-2.0
// What the rules are written with.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "document/machine.h"
#include "steps/change_state.h"

namespace change {

using Rule = void (*)(const Change& change, Findings* findings);

// ---- addresses.cpp
void LoopbackStays(const Change& change, Findings* findings);
void AddressOfAHost(const Change& change, Findings* findings);
void AddressIsFree(const Change& change, Findings* findings);
void OneSubnetAPort(const Change& change, Findings* findings);
// ---- gateways.cpp
void GatewayIsReached(const Change& change, Findings* findings);
void GatewayStaysReached(const Change& change, Findings* findings);
// ---- names.cpp
void NamesExist(const Change& change, Findings* findings);
void NewNamesAreFree(const Change& change, Findings* findings);
void TopologyIsSupported(const Change& change, Findings* findings);
// ---- members.cpp
void MembersHaveNoAddress(const Change& change, Findings* findings);
void MembersAreFree(const Change& change, Findings* findings);
void ParentsAreFree(const Change& change, Findings* findings);
void NobodyStandsOnWhatGoes(const Change& change, Findings* findings);
// ---- mtu.cpp
void MtuIsCarried(const Change& change, Findings* findings);
// ---- dhcp.cpp
void RangeFitsItsSubnet(const Change& change, Findings* findings);
void RangeIsTheServersAlone(const Change& change, Findings* findings);
void ServerTakesTheValues(const Change& change, Findings* findings);
void ServerTakesTheSettings(const Change& change, Findings* findings);
void OnlyWhatIsOnRestarts(const Change& change, Findings* findings);

// ---- own_path.cpp
void OwnPathStays(const Change& change, Findings* findings);

// What the server's own check said, as a rehearsal finds it, too.
Finding DhcpServerRefuses(const std::string& words);

// ---- what several rules ask

// A fixed IPv4 address with its subnet.
struct Subnet {
  std::string address;
  std::uint32_t host = 0;
  std::uint32_t mask = 0;

  [[nodiscard]] std::uint32_t Network() const { return host & mask; }
  [[nodiscard]] std::uint32_t Broadcast() const { return host | ~mask; }
  [[nodiscard]] bool Holds(std::uint32_t other) const { return (other & mask) == Network(); }
};

std::uint32_t NumberOfIpv4(const std::string& address);
std::string Ipv4Text(std::uint32_t number);

// The fixed address that an interface shall have; where it is left as it is, the one that the
// kernel has.
std::optional<Subnet> SubnetOf(const Change& change, const std::string& ifname);

// The interfaces of the kernel and of the document to be, but the loopback, sorted.
std::vector<std::string> AllInterfaces(const Change& change);

// "the bond bond0", "the bridge br0"; empty for an interface that is part of neither when the
// change is done.
std::string MasterOf(const Change& change, const std::string& ifname);

}  // namespace change
