# SPDX-License-Identifier: Apache-2.0
"""An example call of each function, made from its declaration: what a caller declares, calls, checks and frees."""
import re

# Texts by the parameter's name; one that stands in no row is an error, so that a new parameter gets its row.
TEXTS = {
    "eth0": "szIfname ifname szRowDev szOld old_if szSlave",
    "lan0": "szNew new_if",
    "bond0": "szBond bond szMaster",
    "br0": "szBridge",
    "eth0.10": "szVlan",
    "192.168.50.10": "szIP szAddr szAddr1 szStart start",
    "192.168.50.20": "szAddr2 szEnd end",
    "192.168.50.1": "szGateway",
    "2001:db8::1": "szAddrA",
    "2001:db8::2": "szAddrB",
    "255.255.255.0": "szMask netmask",
    "nas": "szHost szHostname szName",
    "mail": "szAtom",
    "example.com": "szDomain",
    "1500": "szMTU",
    "-4": "szType",
    "add": "szAction",
    "static": "szMode",
    "tcp": "szProto",
    "02:00:00:00:00:10": "szMac",
    "subnet1": "tag",
    "MSFT": "vendor",
    "12": "text",
    "/etc/sysconfig/network-scripts/ifcfg-bond0": "szPath",
}
TEXT = {name: text for text, names in TEXTS.items() for name in names.split()}
SPECIAL = {  # where the function takes another text than its parameter's name tells
    ("ZARNNetCalBroadcast", "szAddr"): "192.168.50.10/24",
    ("ZARNNetCalNetwork", "szAddr"): "192.168.50.10/24",
    ("ZARNNetIPv6ConfSet", "szAddr"): "2001:db8::1",
    ("ZARNNetIPv6ConfSet", "szGateway"): "fe80::1",
    ("ZARNNetIPv6IPAction", "szAddr"): "2001:db8::1",
    ("ZARNNetIPv6IPAction", "szGateway"): "",
    ("ZARNNetLinkAggrStringToMode", "szMode"): "802.3ad",
    ("ZARNNetIPChangePreHook", "szOld"): "192.168.50.9",
    ("ZARNNetIPChangePreHook", "szNew"): "192.168.50.10",
    ("ZARNNetGatewayConfigChangeHook", "szType"): "ipv4",
    ("ZARNNetGatewayConfigChangeHook", "szOld"): "192.168.50.1",
    ("ZARNNetGatewayConfigChangeHook", "szNew"): "192.168.50.2",
    ("DHCPVendorSetVendorOpt", "value"): "nas",
}
NUMBERS = {"prefix": "24", "family": "2 /* AF_INET */", "first": "1", "last": "1023", "cTimeoutSeconds": "3", "id": "10",
           "selector": "ZARNNETKIND_USABLE", "stage": "ZARNNETSTAGE_AFTER", "role": "ZARNBRIDGE_BRIDGE", "kind": "1",
           "mode": "ZARNBOND_8023AD", "mask": "ZARNNET_BLOCK_VIRTUAL", "number": "12", "enable": "1", "blJoin": "1",
           "action": "1", "cMax": "32", "code": "KOPACErrGet()", "value": "1"}
JSON = {"szWish": r'"{\"interfaces\": {\"eth0\": {\"mtu\": 1400}}}"', "szOptions": "NULL"}


def texts(entry, name):
    if (entry.name, name) in SPECIAL:
        return f'"{SPECIAL[entry.name, name]}"'
    return JSON.get(name) or f'"{TEXT[name]}"'


def argument(entry, index):
    """(declarations, the argument, what frees it)"""
    kind, name = entry.parameters[index]
    bare = kind.replace("const ", "").strip()
    following = entry.parameters[index + 1][0] if index + 1 < len(entry.parameters) else ""
    if kind == "const char*":
        return [], texts(entry, name), []
    if kind == "char**":
        return [f"char* {name} = NULL;"], f"&{name}", [f"ZARNNetChangeFree({name});"]
    if kind == "char*" and entry.name == "ZARNNetChangeFree":
        return ["char* szText = NULL;", "ZARNNetChangeRead(NULL, &szText);"], name, []
    if kind == "char*":
        given = {"szMask": "255.255.255.0", "szIn": "192.168.50.10/24"}.get(name) if following in ("", "char*") else None
        return [f"char {name}[64]" + (f' = "{given}";' if given else ";")], name, []
    if m := re.fullmatch(r"(unsigned int)\[(\d)\]", bare):
        return [f"{m[1]} {name}[{m[2]}]" + (" = {255, 255, 255, 0};" if kind.startswith("const") else ";")], name, []
    if bare == "PKOPACSZLIST*":
        return [f"PKOPACSZLIST {name} = KOPACSzListAlloc(8);"], f"&{name}", [f"KOPACSzListFree({name});"]
    if bare in ("PKOPACSZLIST", "KOPACSZLIST*"):
        return [f"PKOPACSZLIST {name} = KOPACSzListAlloc(8);",
                f'KOPACSzListPush(&{name}, "{ {"pServers": "192.168.50.1", "pAddrs": "192.168.50.10"}.get(name, "eth0") }");'], \
            name, [f"KOPACSzListFree({name});"]
    if bare in ("PKOPACSZHASH*", "PKOPACSZHASH"):
        return [f"PKOPACSZHASH {name} = KOPACSzHashAlloc(8);"], ("&" if "*" in bare else "") + name, [f"KOPACSzHashFree({name});"]
    if bare == "PKOPANETSTATLIST":
        free = [] if entry.name == "KOPANetStatFree" else [f"KOPANetStatFree({name});"]
        return [f"PKOPANETSTATLIST {name} = KOPANetStatInit(32);"], name, free
    if bare == "PKOPAPLUGIN":
        return [f"PKOPAPLUGIN {name} = NULL;", f'KOPAPluginSDKInit("net", "ifname_change", &{name});'], name, \
            [f"KOPAPluginExit({name});"]
    if bare.startswith("PFN") or bare == "void*":
        return [], "NULL", []
    if bare == "DHCP_OPTION*" or bare == "DHCP_RANGE*":
        return [f"{bare} {name} = NULL;"], name, []
    if bare.endswith("**"):
        free = f"DHCPRangeFree({name});" if "RANGE" in bare else f"free({name});"
        return [f"{bare[:-1]} {name} = NULL;"], f"&{name}", [free]
    if name in ("pList", "rgAddr", "rgPort"):
        return [f"{bare[:-1]} {name}[32]" + (";" if bare == "int*" else " = {{{0}, {0}, {0}, 0, 0, 0, {0, 0, 0}, {0}}};" if "Info" in bare else ";")], name, []
    if name in ("max", "cAddr", "cPort"):
        return [], "32", []
    if bare.endswith("*") and bare[:-1] in ("int", "uint32_t", "int32_t"):
        return [f"{bare[:-1]} {name} = 0;"], f"&{name}", []
    if bare.endswith("*"):
        return [f"{bare[:-1]} {name};", f"memset(&{name}, 0, sizeof {name});"], f"&{name}", []
    if name.startswith("cb") or name.endswith("size"):
        return [], f"sizeof {entry.parameters[index - 1][1]}", []
    return [], NUMBERS.get(name, "0"), []


def example(entry):
    """The lines of the example."""
    if not entry.is_function:
        return []
    parts = [argument(entry, index) for index in range(len(entry.parameters))]
    call = f"{entry.name}({', '.join(part[1] for part in parts)})"
    if entry.returns == "void":
        use = [call + ";"]
    elif entry.name == "ZARNExternalIPGet":
        use = [f"char* szIP = {call};", "if (szIP) puts(szIP);", "free(szIP);"]
    elif entry.returns.endswith("*") and "char" in entry.returns:
        use = [f"const char* szText = {call};", "if (szText) puts(szText);"]
    elif entry.returns.startswith("PKOPANETSTATLIST"):
        use = [f"PKOPANETSTATLIST pStat = {call};", "KOPANetStatFree(pStat);"]
    elif "zarnnetchange" in entry.header:
        out = next(name for kind, name in entry.parameters if kind == "char**")
        use = [f"if ({call} != ZARNNETCHANGE_DONE && {out}) fputs({out}, stderr);"]
    elif re.match(r"0\b(?! for Sunday)", entry.result) and entry.returns == "int":
        use = [f"if ({call} < 0)", '  fprintf(stderr, "0x%04X\\n", KOPACErrGet());']
    elif re.match(r"1( or|,|;)", entry.result) and "0" in entry.result:
        use = [f"if ({call} == 1) puts(\"yes\");"]
    else:
        use = [f'printf("%d\\n", (int){call});']
    return [line for part in parts for line in part[0]] + use + [line for part in parts for line in part[2]]


def program(entries):
    """All examples in one C99 program, for the compiler to judge."""
    lines = ["#include <stdio.h>", "#include <stdlib.h>", "#include <string.h>", "#include <zarnnetchange/change.h>",
             "#include <zarnnetsdk/zarnnetsdk.h>", ""]
    functions = [entry for entry in entries.values() if entry.is_function]
    for entry in functions:
        lines += [f"void example_{entry.name}(void);", f"void example_{entry.name}(void) {{",
                  *("  " + line for line in example(entry)), "}", ""]
    return "\n".join(lines)
