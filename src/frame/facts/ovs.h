// SPDX-License-Identifier: Apache-2.0
// Open vSwitch on this machine: its devices, and its bonds with their members.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <zarnnetsdk/virtual.h>

namespace frame::facts {

// ZARNOVS_BOND, ZARNOVS_DEVICE or ZARNOVS_NONE: by its name, and only where the kernel has it. A
// name that can be no interface's is none, with 0x0D00.
int OvsKindOf(std::string_view ifname);

// Is there an Open vSwitch device over the interface?
bool IsUnderOvs(std::string_view ifname);

// The port under a device: what stands behind "ovs_". Nothing, with 0x0D00, for a name without it.
std::optional<std::string> PortUnder(std::string_view ifname);

// The Open vSwitch bonds as their table has them now. Without a table there are none.
class OvsBonds {
 public:
  OvsBonds();

  // The bond that an interface is a member of, empty for none; nothing when the table cannot be
  // opened.
  [[nodiscard]] std::optional<std::string> Of(std::string_view ifname) const;
  [[nodiscard]] std::optional<bool> HaveMember(std::string_view ifname) const;

 private:
  bool isReadable_ = true;
  std::map<std::string, std::string, std::less<>> bondOfMember_;
};

// Is the interface under Open vSwitch, and a member of one of its bonds?
bool IsOvsPort(std::string_view ifname, const OvsBonds& bonds = {});

}  // namespace frame::facts
