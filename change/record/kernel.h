// SPDX-License-Identifier: Apache-2.0
// The networking of the kernel: read in three questions, and put back as it was read.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace change {

// The bytes of the kernel's message are kept: sent back, they make the same thing again.
struct KernelAddress {
  int family = 0;
  std::string text;
  unsigned prefix = 0;
  std::uint32_t flags = 0;
  std::uint8_t scope = 0;
  std::string message;

  [[nodiscard]] std::string WithPrefix() const { return text + "/" + std::to_string(prefix); }
  // One that the kernel gives and takes by itself.
  [[nodiscard]] bool IsAutomatic() const;
};

struct KernelRoute {
  int family = 0;
  bool isDefault = false;
  std::string target;  // with its prefix; empty for a default route
  std::string gateway;
  std::string ifname;
  std::uint32_t metric = 0;
  std::uint8_t protocol = 0;
  std::uint8_t scope = 0;
  std::string message;

  [[nodiscard]] bool IsAutomatic() const;
  // "default via 192.168.50.1 dev eth0"
  [[nodiscard]] std::string Words() const;
};

struct KernelLink {
  std::string name;
  int index = 0;
  unsigned flags = 0;
  int mtu = 0;
  int leastMtu = 0;
  int mostMtu = 0;  // 0: the driver does not say
  int masterIndex = 0;
  int parentIndex = 0;
  bool carrier = false;
  std::string mac;
  std::string kind;         // "bridge", "bond", "vlan"; empty for a port
  std::string kindMessage;  // what makes another one, with the settings of the kind
  std::string master;       // of a slave or a bridge's port
  std::string parent;       // of a VLAN
  int vlanId = 0;
  std::vector<KernelAddress> addresses;  // in the kernel's order

  [[nodiscard]] bool IsUp() const;
  [[nodiscard]] bool IsLoopback() const;
};

struct Kernel {
  std::string hostname;
  std::map<std::string, KernelLink> links;
  std::vector<KernelRoute> routes;                // of the main table
  std::map<std::string, std::string> ipv6Switch;  // paths below /proc/sys and what they read

  [[nodiscard]] const KernelLink* Link(const std::string& name) const;
  [[nodiscard]] const KernelRoute* DefaultRoute() const;  // of IPv4
  // The interface with an IPv4 subnet that holds the address; null for none.
  [[nodiscard]] const KernelLink* LinkTo(const std::string& address) const;
  [[nodiscard]] std::vector<std::string> MembersOf(const std::string& master) const;
};

// Empty when the kernel cannot be asked.
std::optional<Kernel> ReadKernel();

// What differs, a sentence each; nothing that the kernel does by itself.
std::vector<std::string> DifferencesOf(const Kernel& before, const Kernel& now);

// Gives the links that are still there their flags, MTU, master, addresses and routes back. Links
// that came or went are the start script's.
void PutBack(const Kernel& before);

// Makes a route or an address again, also on another link than it was. False when the kernel
// refuses.
bool AddRoute(const KernelRoute& route, const Kernel& now);
bool AddAddress(const KernelAddress& address, const KernelLink& link);

}  // namespace change
