// SPDX-License-Identifier: Apache-2.0
// The public records as programs in other languages, and programs that were built long ago, know
// them: the same on every processor, but for the width of a pointer.
#include <cstddef>

#include <zarnnetsdk/zarnnetsdk.h>

namespace {

constexpr std::size_t kPointer = sizeof(void*);

static_assert(sizeof(KOPANetIfInfo) == 132);
static_assert(offsetof(KOPANetIfInfo, ip) == 22 && offsetof(KOPANetIfInfo, link) == 92);
static_assert(offsetof(KOPANetIfInfo, flags) == 96 && offsetof(KOPANetIfInfo, mask) == 112);
static_assert(sizeof(ZARNNETIFADDR) == 72 && offsetof(ZARNNETIFADDR, szIP) == 30);
static_assert(sizeof(ZARNNETETHINFO) == 16);
static_assert(sizeof(KOPANETSTAT) == 80 && offsetof(KOPANETSTATLIST, rgItem) == 8);
static_assert(sizeof(KOPANETTOPOLOGY) == 92 && sizeof(gTopologyInfo) == std::size_t{4} * 92);
static_assert(sizeof(ZARNBRIDGEINFO) == 36 && sizeof(grgTopologyIFInfo) == std::size_t{16} * 36);
static_assert(sizeof(ZARNNETV6ADDR) == 60 && offsetof(ZARNNETV6ADDR, prefix) == 48);
static_assert(sizeof(ZARNLINKAGGROPT) == 540 && offsetof(ZARNLINKAGGROPT, rgszSlave) == 28);
static_assert(sizeof(ZARNBONDDESC) == 3 * kPointer);
static_assert(sizeof(ZARNNETIFSETTINGS) == 64);
static_assert(sizeof(KOPANETVLAN) == 36);
static_assert(sizeof(DHCP_OPTION) == 1080 + 2 * kPointer);
static_assert(offsetof(DHCP_SUBNET_CONF, options) == (1364 + kPointer - 1) / kPointer * kPointer);
static_assert(offsetof(DHCP_SUBNET_CONF, netmask) == 980 &&
              offsetof(DHCP_SUBNET_CONF, tag) == 1328);
static_assert(sizeof(DHCP_RANGE) == 48 + kPointer);
static_assert(sizeof(DHCP_PXE_CONF) == 8220);
static_assert(sizeof(PPPOE_CONF) == 316);
static_assert(sizeof(PPPOE_RELAY_CONF) == 20);
static_assert(sizeof(ZARNTUNNELCONF) == 545);

}  // namespace
