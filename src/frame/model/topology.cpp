// SPDX-License-Identifier: Apache-2.0
// The network topologies of an appliance with a wireless interface, and the part that interfaces
// play in each.
#include <zarnnetsdk/iface.h>

extern "C" {
const KOPANETTOPOLOGY gTopologyInfo[4] = {
    {0, "unknown", "eth0", 0, 3},
    {1, "client", "eth0", 1, 1},
    {2, "bridge", "br0", 0, 2},
    {3, "router", "eth0", 0, 3},
};

const ZARNBRIDGEINFO grgTopologyIFInfo[4][4] = {
    {},
    {{ZARNBRIDGE_STANDALONE, "eth0", ""}, {ZARNBRIDGE_STANDALONE, "wlan0", ""}},
    {{ZARNBRIDGE_PORT, "eth0", "br0"},
     {ZARNBRIDGE_PORT, "wlan0", "br0"},
     {ZARNBRIDGE_BRIDGE, "br0", "eth0"}},
    {{ZARNBRIDGE_STANDALONE, "eth0", ""},
     {ZARNBRIDGE_PORT, "wlan0", "lbr0"},
     {ZARNBRIDGE_LOCAL_LAN, "lbr0", "wlan0"}},
};
}
