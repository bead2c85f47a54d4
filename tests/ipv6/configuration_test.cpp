// SPDX-License-Identifier: Apache-2.0
// What interface files say of IPv6: read back, and brought to the kernel at start-up; single
// addresses and routes.
#include <zarnnetsdk/ipv6.h>

#include "support/transcript.h"

using namespace test;

namespace {

void Get(const char* ifname = "eth0") {
  int type = 77;
  int prefix = 77;
  char address[46] = "untouched";
  char gateway[46] = "untouched";
  TELL(ZARNNetIPv6ConfGet(ifname, &type, address, 46, &prefix, gateway, 46));
  Say(std::to_string(type) + " " + address + "/" + std::to_string(prefix) + " via " + gateway);
}

std::string SwitchPath(const std::string& ifname) {
  return "/proc/sys/net/ipv6/conf/" + ifname + "/accept_ra";
}

}  // namespace

TEST(V6Conf, TypesAndValuesAreThoseOfTheFile) {
  Get();  // a down interface is of no kind
  BringUp("eth0");
  const std::string rest =
      "IPV6ADDR=fd00::5\nIPV6PREFIXLENG=48\nIPV6_DEFAULTGW=fe80::1";  // no last newline
  for (const std::string& file :
       {"IPV6INIT=auto\n" + rest, "IPV6INIT=off\n" + rest, "IPV6INIT=Dhcp\n" + rest,
        "IPV6INIT=\"static\"\n" + rest, "IPV6INIT=AUTO_DHCP\n" + rest,
        std::string("IPV6INIT=auto\n"), "IPV6INIT=manual\n" + rest, rest,
        "IPV6INIT=static\nIPV6PREFIXLENG=x\n" + rest}) {
    WriteIfcfg("eth0", file);
    Say(file.substr(0, file.find('\n')));
    Get();
  }
  RemoveFile(IfcfgPath("eth0"));
  Get();
}

TEST(V6Init, EverySwitchIsAsItsFileAsks) {
  int number = 10;
  for (const std::string file :
       {"IPV6INIT=static\n", "IPV6INIT=STATIC\nIPV6_ACCEPT_RA=1\n",
        "IPV6INIT=auto\nIPV6_ACCEPT_RA=0\n", "IPV6INIT=auto\nIPV6_ACCEPT_RA=00\n", "IPV6INIT=off\n",
        "BOOTPROTO=dhcp\n", "IPV6INIT=static\nIPV6_ACCEPT_RA=\n"}) {
    const std::string name = "v6t" + std::to_string(number++);
    Shell("ip link add " + name + " type veth peer name p" + name);
    WriteIfcfg(name, file);
    Say(name + " has " + file);
  }
  Shell("ip link add br0 type bridge; ip link set eth1 master br0");
  RemoveFile(IfcfgPath("eth2"));
  // A folder where the file of eth3 should be cannot be read, and is passed over.
  RemoveFile(IfcfgPath("eth3"));
  WriteFile(IfcfgPath("eth3") + "/in-the-way", "");
  Say("eth1 is a bridge's port, eth2 has no file, that of eth3 cannot be read");
  TELL(ZARNNetIpv6Init());
}

TEST(V6Init, TheFirstMissingSwitchStopsIt) {
  MountEmpty("/proc/sys/net");
  WriteFile(SwitchPath("eth0"), "1\n");
  WriteFile(SwitchPath("eth2"), "1\n");
  TELL(ZARNNetIpv6Init());
  MountEmpty("/proc/self/net");
  TELL(ZARNNetIpv6Init());
}

TEST(V6Action, AGatewayChangesTheRouteAndNothingElse) {
  RecordTool("/sbin/ip", 3);
  TELL(ZARNNetIPv6IPAction(0, "eth0", "fd00::5", 64, "fe80::1"));
  TELL(ZARNNetIPv6IPAction(1, "eth0", "fd00::5", 64, "fe80::1"));
  TELL(ZARNNetIPv6IPAction(1, "eth0", "fd00::5", 64, nullptr));
  TELL(ZARNNetIPv6IPAction(0, "eth0", "fd00::5", 129, nullptr));
  TELL(ZARNNetIPv6IPAction(2, "eth0", "fd00::5", 64, nullptr));
  TELL(ZARNNetIPv6IPAction(0, "eth0", "fd00::5", 64, "-batch"));
}
