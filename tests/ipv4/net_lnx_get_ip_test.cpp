// SPDX-License-Identifier: Apache-2.0
// Reading addresses: from the kernel, from the files, from the dynamic-DNS daemon.
#include <cstdlib>

#include <zarnnetsdk/ipv4.h>

#include "support/transcript.h"

using namespace test;

namespace {

void Read(int (*get)(const char*, char*, int), const std::string& ifname, int size = 32) {
  char buffer[32] = "untouched";
  const std::string why = std::string(get == ZARNILnxGetIP ? "live " : "configured ") + ifname;
  Tell(why, [&] { return get(ifname.c_str(), buffer, size); });
  Say(buffer);
}

}  // namespace

TEST(Address, LiveIsCutToTheBufferAndZeroWithoutOne) {
  Read(ZARNILnxGetIP, "eth0");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  Read(ZARNILnxGetIP, "eth0", 8);
  Read(ZARNILnxGetIP, "eth0123456789abcdef");
}

TEST(Address, ConfiguredComesFromTheLeaseOnDhcpAndFromTheFileOtherwise) {
  RemoveFile(IfcfgPath("eth9"));
  Read(ZARNILnxGetIPFromCfg, "eth9");
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.0.0.1\n");
  Read(ZARNILnxGetIPFromCfg, "eth0");
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\nIPADDR=10.0.0.1\n");
  Read(ZARNILnxGetIPFromCfg, "eth0");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info", "IPADDR=192.168.50.77\n");
  Read(ZARNILnxGetIPFromCfg, "eth0");
  WriteIfcfg("eth0", "BOOTPROTO=static\n");
  Read(ZARNILnxGetIPFromCfg, "eth0");
}

TEST(Address, ExternalIsTheDaemonsAnswerOrNull) {
  const auto external = [](const std::string& why) {
    std::string answer = "null";
    Tell(why, [&] {
      char* const ip = ZARNExternalIPGet();
      if (ip != nullptr) answer = ip;
      std::free(ip);
      return 0;
    });
    Say(answer);
  };
  RecordTool("/usr/zarn/sbin/ddnsd", 7);
  external("a daemon that fails");
  RecordTool("/usr/zarn/sbin/ddnsd");
  external("no result file");
  WriteFile("/run/ddns/externalIP.result", "externalIP=203.0.113.250.and.more\n");
  external("15 characters and no more");
}
