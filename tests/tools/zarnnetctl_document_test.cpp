// SPDX-License-Identifier: Apache-2.0
// Documents on the command line: JSON and YAML, differences, drift, the editor.
#include "ctl.h"
#include "support/transcript.h"

using namespace test;

namespace {

void SetUpEth0() {
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  for (const char* ifname : {"eth1", "eth2", "eth3"})
    WriteIfcfg(ifname, "BOOTPROTO=none\n");
  BringUp("eth0");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  WriteFile("/etc/hostname", "nas\n");
  Shell("hostname nas");
}

}  // namespace

TEST(Documents, YamlIsReadByTheCoreSchemaAndBounded) {
  SetUpEth0();
  Type(R"sh(
$ printf 'host: {name: no}\ninterfaces: {eth0: &a {mtu: 0x578}, eth1: *a}\n' | zarnnetctl diff -
$ printf 'dhcp_server: {vendors: {no: {43: 08:00}}}' | zarnnetctl diff -
$ printf 'host:\n  name: a\n  name: b\n' | zarnnetctl diff - 2>&1
$ printf '{"host":{"name":"a","name":"b"}}' | zarnnetctl diff - 2>&1
$ printf 'host: !!binary aaaa' | zarnnetctl diff - 2>&1
$ printf 'a: *b' | zarnnetctl diff - 2>&1
$ printf 'a: 1\n---\nb: 1\n' | zarnnetctl diff - 2>&1
$ (echo "a: &x [`seq -s, 999`]"; seq -f 'b%.0f: *x' 999) | zarnnetctl diff - 2>&1
$ head -c 99999 /dev/zero | tr '\0' '[' | zarnnetctl diff - 2>&1
$ yes -- - | head -n 9999 | tr '\n' ' ' | zarnnetctl diff - 2>&1
$ head -c 1048577 /dev/zero | tr '\0' ' ' | zarnnetctl diff - 2>&1
)sh");
}

TEST(Documents, WhatIsShownIsTakenBackAndChangesNothing) {
  SetUpEth0();
  Type(R"(
$ zarnnetctl show --yaml
$ zarnnetctl show --yaml | zarnnetctl apply - | grep reason
$ zarnnetctl show --json | zarnnetctl apply - | grep reason
)");
}

TEST(Documents, DriftIsToldWithWhatSettlesIt) {
  SetUpEth0();
  Type(R"(
$ zarnnetctl diff --drift
$ ip link set eth1 mtu 1450; ip link add br7 type bridge; ip link set eth2 master br7
diff --drift
)");
}

// The editor makes a mistake, finds it told beside its line, and puts it right.
TEST(Documents, TheEditorComesBackUntilItIsRightOrGivenUp) {
  SetUpEth0();
  WriteFile("/tmp/editor",
            "#!/bin/sh\nstat -c %a \"$1\"\nif grep -A1 '^#!' \"$1\"; then name=better; else "
            "name='a b'; fi\nsed -i \"s/^  name:.*/  name: $name/\" \"$1\"\n",
            0755);
  Type(R"(
$ VISUAL=/tmp/editor zarnnetctl edit; hostname; ls /tmp | grep zarnnet-
$ EDITOR=true zarnnetctl edit
$ EDITOR=false zarnnetctl edit 2>&1
)");
}
