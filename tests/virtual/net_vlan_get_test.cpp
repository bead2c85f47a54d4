// SPDX-License-Identifier: Apache-2.0
// VLANs as the kernel tells of them. Not every test machine's kernel has the driver: its answers to
// the VLAN request and its table are put in place here.
#include <cstdlib>
#include <cstring>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/virtual.h>

#include "support/kernel_answers.h"
#include "support/transcript.h"

using namespace test;

namespace {

constexpr char kTable[] = "/proc/net/vlan/config";
constexpr char kHead[] =
    "VLAN Dev name    | VLAN ID\nName-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD\n";

void SayVlan(const KOPANETVLAN& vlan) {
  Say(std::string(vlan.szName) + " of '" + vlan.szRowDev + "', " + std::to_string(vlan.id));
}

TEST(Vlan, KernelIsAskedForTheWholeName) {
  Kernel().vlanParents = {{"eth0.10", "eth0"}, {"abcdefghijklm.4", "abcdefghijklm"}};
  KOPANETVLAN vlan;
  std::memset(&vlan, 0x5A, sizeof vlan);
  for (const char* name : {"eth0.10", "eth1"}) {
    TELL(KOPANetVlanGet(name, &vlan));
    SayVlan(vlan);
  }
  TELL(KOPANetVlanGetByRowDev("abcdefghijklm", 4, &vlan));
  TELL(KOPANetVlanGetByRowDev("abcdefghijklm", 4094, &vlan));
  for (const unsigned id : {0U, 4095U, 65537U, ~0U})
    REFUSED(ZARNNETERR_BAD_PARAMETER, KOPANetVlanGetByRowDev("eth0", id, &vlan));
  const NoDescriptors none;
  REFUSED(ZARNNETERR_VLAN_QUERY, KOPANetVlanGet("eth0.10", &vlan));
}

TEST(Vlan, TableIsReadBehindItsHeadAndAnUnexpectedLineGivesNothing) {
  MountEmpty("/proc/self/net");
  const std::string one = std::string(kHead) + "eth0.10        | 10  | eth0\n";
  for (const std::string& table :
       {std::string(), std::string(kHead),
        one + "abcdefghijk.409| 409  | abcdefghijk\nvlan7\t| 7  | ovs_eth3",
        one + "eth1.5 10 eth1\n", one + "eth1.5 | x | eth1\n", one + "eth1.5 | 5\n",
        one + "abcdefghijklmnopqrs | 5  | eth1\n"}) {
    if (!table.empty()) WriteFile(kTable, table);
    KOPANETVLAN junk;
    KOPANETVLAN* vlans = &junk;
    int count = 7;
    Tell(table.empty() ? "no driver" : "table " + table.substr(table.find("_PAD") + 5),
         [&] { return KOPANetVlanEnum(&vlans, &count); });
    Say("exist " + std::to_string(KOPANetVlanExist()));
    EXPECT_EQ(vlans == nullptr, count == 0) << table;
    for (int i = 0; i < count; ++i)
      SayVlan(vlans[i]);
    std::free(vlans);
  }
}

}  // namespace
