// SPDX-License-Identifier: Apache-2.0
// What a test puts in the kernel's place: not every machine's kernel has the VLAN driver, and none
// has a slow link. Whatever is not set here is the real kernel's.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "support/appliance.h"

namespace test {

// A driver that knows nothing but the old settings request; with no speed it knows nothing at all.
struct PoorDriver {
  std::optional<unsigned> speed;
  unsigned char duplex = 0xFF;
  unsigned char autoneg = 0xFF;
};

struct KernelAnswers {
  std::map<std::string, std::string> vlanParents;  // of "eth0.10": "eth0"
  std::string
      vlanNeedsFile;  // this VLAN is there while it has a file, as the start script makes it
  std::optional<PoorDriver> driver;
  bool refuseRename = false;
};

KernelAnswers& Kernel();

}  // namespace test
