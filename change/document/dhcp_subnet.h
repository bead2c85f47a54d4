// SPDX-License-Identifier: Apache-2.0
// A subnet that the DHCP server serves, as a document and as the library's record.
#pragma once

#include <memory>
#include <vector>

#include <zarnnetsdk/dhcpd.h>

#include "document/machine.h"
#include "document/shape.h"

namespace change {

enum class Family { kV4 = 0, kV6 = 1 };

Shape SubnetShape(Family family, bool withOptions);
Json SubnetOf(const DHCP_SUBNET_CONF& record, Family family, bool withOptions);

// A record of a document, with the options that it owns.
class SubnetRecord {
 public:
  SubnetRecord(const std::string& ifname, const Json& subnet, Family family);

  DHCP_SUBNET_CONF record{};

 private:
  void FillOptions(const Json& options);

  std::vector<std::unique_ptr<Names>> lists_;
  std::vector<std::unique_ptr<DHCP_OPTION>> options_;
};

}  // namespace change
