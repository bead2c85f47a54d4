// SPDX-License-Identifier: Apache-2.0
// The public records as programs in other languages, and programs that were built long ago, know
// them: the same on every processor, but for the width of a pointer. A member that moves does not
// compile; one that is new in a record would move those of arrays of it.
#include <cstddef>

#include <zarnnetsdk/zarnnetsdk.h>

namespace {

constexpr std::size_t kPointer = sizeof(void*);
constexpr std::size_t kOptions = (1364 + kPointer - 1) / kPointer * kPointer;

#define MEMBER(record, member, offset) static_assert(offsetof(record, member) == (offset))

static_assert(sizeof(DHCP_OPTION) == 1080 + 2 * kPointer);
MEMBER(DHCP_OPTION, number, 0);
MEMBER(DHCP_OPTION, name, 4);
MEMBER(DHCP_OPTION, value, 56);
MEMBER(DHCP_OPTION, values, 1080);
MEMBER(DHCP_OPTION, next, 1080 + kPointer);

static_assert(sizeof(DHCP_SUBNET_CONF) == kOptions + kPointer);
MEMBER(DHCP_SUBNET_CONF, enable, 0);
MEMBER(DHCP_SUBNET_CONF, reserved1, 4);
MEMBER(DHCP_SUBNET_CONF, lease, 8);
MEMBER(DHCP_SUBNET_CONF, start, 12);
MEMBER(DHCP_SUBNET_CONF, end, 58);
MEMBER(DHCP_SUBNET_CONF, interface, 104);
MEMBER(DHCP_SUBNET_CONF, domain, 120);
MEMBER(DHCP_SUBNET_CONF, dns1, 376);
MEMBER(DHCP_SUBNET_CONF, dns2, 422);
MEMBER(DHCP_SUBNET_CONF, dns_more, 468);
MEMBER(DHCP_SUBNET_CONF, netmask, 980);
MEMBER(DHCP_SUBNET_CONF, router, 1026);
MEMBER(DHCP_SUBNET_CONF, reserved2, 1072);
MEMBER(DHCP_SUBNET_CONF, tag, 1328);
MEMBER(DHCP_SUBNET_CONF, v6mode, 1348);
MEMBER(DHCP_SUBNET_CONF, options, kOptions);

static_assert(sizeof(DHCP_RANGE) == 48 + kPointer);
MEMBER(DHCP_RANGE, start, 0);
MEMBER(DHCP_RANGE, end, 16);
MEMBER(DHCP_RANGE, netmask, 32);
MEMBER(DHCP_RANGE, next, 48);

static_assert(sizeof(DHCP_PXE_CONF) == 8220);
MEMBER(DHCP_PXE_CONF, enable, 0);
MEMBER(DHCP_PXE_CONF, is_remote_tftp, 4);
MEMBER(DHCP_PXE_CONF, local_bootloader, 8);
MEMBER(DHCP_PXE_CONF, remote_bootloader, 4104);
MEMBER(DHCP_PXE_CONF, remote_tftp_server_ip, 8200);

static_assert(sizeof(KOPANetIfInfo) == 132);
MEMBER(KOPANetIfInfo, name, 0);
MEMBER(KOPANetIfInfo, mac, 16);
MEMBER(KOPANetIfInfo, ip, 22);
MEMBER(KOPANetIfInfo, reserved1, 88);
MEMBER(KOPANetIfInfo, link, 92);
MEMBER(KOPANetIfInfo, flags, 96);
MEMBER(KOPANetIfInfo, reserved2, 100);
MEMBER(KOPANetIfInfo, mask, 112);

static_assert(sizeof(KOPANETSTAT) == 80);
MEMBER(KOPANETSTAT, name, 0);
MEMBER(KOPANETSTAT, rxBytes, 16);
MEMBER(KOPANETSTAT, rxPackets, 24);
MEMBER(KOPANETSTAT, rxErrors, 32);
MEMBER(KOPANETSTAT, rxDropped, 40);
MEMBER(KOPANETSTAT, txBytes, 48);
MEMBER(KOPANETSTAT, txPackets, 56);
MEMBER(KOPANETSTAT, txErrors, 64);
MEMBER(KOPANETSTAT, txDropped, 72);

static_assert(sizeof(KOPANETSTATLIST) == 8);
MEMBER(KOPANETSTATLIST, nItem, 0);
MEMBER(KOPANETSTATLIST, nMax, 4);
MEMBER(KOPANETSTATLIST, rgItem, 8);

static_assert(sizeof(ZARNNETETHINFO) == 16);
MEMBER(ZARNNETETHINFO, speed, 0);
MEMBER(ZARNNETETHINFO, duplex, 4);
MEMBER(ZARNNETETHINFO, link, 8);
MEMBER(ZARNNETETHINFO, autoneg, 12);

static_assert(sizeof(KOPANETTOPOLOGY) == 92);
MEMBER(KOPANETTOPOLOGY, id, 0);
MEMBER(KOPANETTOPOLOGY, szName, 4);
MEMBER(KOPANETTOPOLOGY, szUplink, 68);
MEMBER(KOPANETTOPOLOGY, flag, 84);
MEMBER(KOPANETTOPOLOGY, mode, 88);

static_assert(sizeof(ZARNNETV6ADDR) == 60);
MEMBER(ZARNNETV6ADDR, szAddr, 0);
MEMBER(ZARNNETV6ADDR, prefix, 48);
MEMBER(ZARNNETV6ADDR, scope, 52);
MEMBER(ZARNNETV6ADDR, flags, 56);

static_assert(sizeof(PPPOE_CONF) == 316);
MEMBER(PPPOE_CONF, eth, 0);
MEMBER(PPPOE_CONF, user, 16);
MEMBER(PPPOE_CONF, password, 272);
MEMBER(PPPOE_CONF, mtu, 304);
MEMBER(PPPOE_CONF, defaultroute, 312);

static_assert(sizeof(PPPOE_RELAY_CONF) == 20);
MEMBER(PPPOE_RELAY_CONF, enable, 0);
MEMBER(PPPOE_RELAY_CONF, server, 4);

static_assert(sizeof(ZARNTUNNELCONF) == 545);
MEMBER(ZARNTUNNELCONF, blAnonymous, 0);
MEMBER(ZARNTUNNELCONF, szServer, 1);
MEMBER(ZARNTUNNELCONF, szUserId, 257);
MEMBER(ZARNTUNNELCONF, szPassword, 513);

static_assert(sizeof(ZARNLINKAGGROPT) == 540);
MEMBER(ZARNLINKAGGROPT, szName, 0);
MEMBER(ZARNLINKAGGROPT, mode, 16);
MEMBER(ZARNLINKAGGROPT, blNoPartner, 20);
MEMBER(ZARNLINKAGGROPT, cSlave, 24);
MEMBER(ZARNLINKAGGROPT, rgszSlave, 28);

static_assert(sizeof(ZARNBONDDESC) == 3 * kPointer);
MEMBER(ZARNBONDDESC, szKernelMode, 0);
MEMBER(ZARNBONDDESC, szName, kPointer);
MEMBER(ZARNBONDDESC, szBondingOpts, 2 * kPointer);

static_assert(sizeof(ZARNBRIDGEINFO) == 36);
MEMBER(ZARNBRIDGEINFO, type, 0);
MEMBER(ZARNBRIDGEINFO, szName, 4);
MEMBER(ZARNBRIDGEINFO, szRef, 20);

static_assert(sizeof(ZARNNETIFSETTINGS) == 64);
MEMBER(ZARNNETIFSETTINGS, blStatic, 0);
MEMBER(ZARNNETIFSETTINGS, blOnBoot, 4);
MEMBER(ZARNNETIFSETTINGS, szName, 8);
MEMBER(ZARNNETIFSETTINGS, szIP, 24);
MEMBER(ZARNNETIFSETTINGS, szMask, 44);

static_assert(sizeof(KOPANETVLAN) == 36);
MEMBER(KOPANETVLAN, szName, 0);
MEMBER(KOPANETVLAN, szRowDev, 16);
MEMBER(KOPANETVLAN, id, 32);

static_assert(sizeof(ZARNNETIFADDR) == 72);
MEMBER(ZARNNETIFADDR, bootProto, 0);
MEMBER(ZARNNETIFADDR, reserved, 4);
MEMBER(ZARNNETIFADDR, szName, 8);
MEMBER(ZARNNETIFADDR, rgMac, 24);
MEMBER(ZARNNETIFADDR, szIP, 30);
MEMBER(ZARNNETIFADDR, szMask, 50);
static_assert(sizeof(gTopologyInfo) == 4 * sizeof(KOPANETTOPOLOGY));
static_assert(sizeof(grgTopologyIFInfo) == 16 * sizeof(ZARNBRIDGEINFO));
static_assert(sizeof(grgBondDesc) == 9 * sizeof(ZARNBONDDESC));

#undef MEMBER

}  // namespace
