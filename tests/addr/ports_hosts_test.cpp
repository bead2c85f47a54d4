// SPDX-License-Identifier: Apache-2.0
// Ports in use, hosts that answer, names, and waking, against real sockets and the second host.
#include <arpa/inet.h>
#include <chrono>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/error.h>

#include "frame/os/file.h"
#include "support/appliance.h"

using namespace test;
using frame::Descriptor;

namespace {

// The loopback address of the family with this port; the call is bind() or connect().
template <class Call>
void WithLoopback(const Call& call, const Descriptor& socket, int family, int port) {
  addrinfo hints{};
  hints.ai_family = family;
  hints.ai_flags = AI_NUMERICHOST;
  addrinfo* found = nullptr;
  const char* const host = family == AF_INET6 ? "::1" : "127.0.0.1";
  ASSERT_EQ(0, ::getaddrinfo(host, std::to_string(port).c_str(), &hints, &found));
  EXPECT_EQ(0, call(socket.Get(), found->ai_addr, found->ai_addrlen));
  ::freeaddrinfo(found);
}

Descriptor Bound(int family, int type, int port) {
  Descriptor socket(::socket(family, type | SOCK_CLOEXEC, 0));
  WithLoopback(&::bind, socket, family, port);
  return socket;
}

Descriptor Listening(int family, int port) {
  Descriptor socket = Bound(family, SOCK_STREAM, port);
  EXPECT_EQ(0, ::listen(socket.Get(), 4));
  return socket;
}

std::vector<int> Used(const char* proto, int first = 1, int last = 65535) {
  std::vector<int> ports(16);
  const int count = ZARNNetGetPortUsedInRange(first, last, proto, ports.data(), 16);
  EXPECT_LE(0, count);
  ports.resize(static_cast<std::size_t>(std::max(count, 0)));
  return ports;
}

}  // namespace

TEST(Ports, AreThoseThatNoServerCouldTake) {
  EXPECT_EQ(std::vector<int>{}, Used(nullptr));
  const Descriptor web = Listening(AF_INET, 8080);
  const Descriptor both = Listening(AF_INET6, 8080);
  const Descriptor v6 = Listening(AF_INET6, 443);
  const Descriptor name = Bound(AF_INET, SOCK_DGRAM, 53);
  const Descriptor v6Name = Bound(AF_INET6, SOCK_DGRAM, 5353);
  Descriptor client = Bound(AF_INET, SOCK_STREAM, 50000);
  WithLoopback(&::connect, client, AF_INET, 8080);
  const Descriptor server(::accept4(web.Get(), nullptr, nullptr, SOCK_CLOEXEC));
  EXPECT_EQ((std::vector<int>{443, 8080, 50000}), Used("TCP")) << ReadFile("/proc/net/tcp6");
  EXPECT_EQ((std::vector<int>{53, 5353}), Used("udp"));
  EXPECT_EQ((std::vector<int>{53, 443, 5353, 8080, 50000}), Used(""));
  EXPECT_EQ((std::vector<int>{5353, 8080}), Used(nullptr, 444, 8080)) << "bounds are in";
  EXPECT_EQ(1, ZARNNetIsPortRangeUsed(8080, 8080, "tcp"));
  EXPECT_EQ(0, ZARNNetIsPortRangeUsed(8080, 8080, "udp"));
  EXPECT_EQ(0, ZARNNetIsPortRangeUsed(8081, 49999, "tcp"));
  int first[2] = {0, -1};
  EXPECT_EQ(5, ZARNNetGetPortUsedInRange(1, 65535, nullptr, first, 1)) << "more than there is room";
  EXPECT_EQ(53, first[0]);
  EXPECT_EQ(-1, first[1]);
  client = Descriptor();
  ::shutdown(server.Get(), SHUT_RDWR);
  EXPECT_EQ((std::vector<int>{443, 8080}), Used("tcp"))
      << "nobody waits for 50000 to be waited out";
}

TEST(Ports, BadRangesAndMissingTablesAreErrors) {
  int port = 0;
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetIsPortRangeUsed(0, 1, "tcp"));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetIsPortRangeUsed(2, 1, "tcp"));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetIsPortRangeUsed(1, 65536, "tcp"));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetIsPortRangeUsed(1, 2, "tcp6"));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetGetPortUsedInRange(1, 2, "", nullptr, 1));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetGetPortUsedInRange(1, 2, "", &port, -1));
  MountEmpty("/proc/self/net");
  REFUSED(ZARNNETERR_OPEN, ZARNNetIsPortRangeUsed(1, 2, "tcp"));
  WriteFile("/proc/self/net/tcp",
            "head\n  0: 0100007F:FFFF 0:0 0A\n  1: garbage\n 2: A:1ZZ 0 0A\n");
  EXPECT_EQ(std::vector<int>{65535}, Used("tcp")) << "a kernel without IPv6";
}

namespace {

// The port on the second host's network.
struct Lan : testing::Test {
  Lan() {
    Shell(
        "ip address add 192.168.50.10/24 dev eth0; ip -6 address add fd00::10/64 dev eth0 nodad;"
        "ip -n lan -6 address add fd00::1/64 dev lan nodad");
    BringUp("eth0");
  }
  static int Connected(const char* host, int seconds, double atLeast, double atMost) {
    const auto begin = std::chrono::steady_clock::now();
    const int result = BlKOPAIsConnected(host, seconds);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_LE(atLeast, took.count()) << host;
    EXPECT_GE(atMost, took.count()) << host;
    return result;
  }
};

}  // namespace

TEST_F(Lan, AHostIsConnectedWhenItAnswersInTime) {
  WriteFile("/etc/hosts", "192.168.50.1 router\n192.168.50.77 twofold\nfd00::1 twofold\n");
  WriteFile("/etc/host.conf", "multi on\n");
  EXPECT_EQ(1, Connected("192.168.50.1", 5, 0, 3));
  EXPECT_EQ(1, Connected("fd00::1", 5, 0, 3)) << Shell("ip address");
  EXPECT_EQ(1, Connected("127.0.0.1", 5, 0, 3));
  EXPECT_EQ(1, Connected("router", 5, 0, 3));
  EXPECT_EQ(1, Connected("twofold", 5, 0, 3)) << "one of its addresses answers";
  EXPECT_EQ(0, Connected("192.168.50.77", 1, 0.9, 2.5)) << "the machine's own errors are no answer";
  EXPECT_EQ(0, Connected("10.1.2.3", 60, 0, 5)) << "no route";
  Refused(
      ZARNNETERR_BAD_PARAMETER, [] { return BlKOPAIsConnected("", 1); }, 0);
  Refused(
      ZARNNETERR_BAD_PARAMETER, [] { return BlKOPAIsConnected("192.168.50.1", 0); }, 0);
  Shell("ip netns exec lan sysctl -w net.ipv4.icmp_echo_ignore_all=1");
  EXPECT_EQ(0, Connected("192.168.50.1", 1, 0.9, 2.5));
}

TEST_F(Lan, NamesGiveAddressesAndAddressesGiveInterfaces) {
  WriteFile("/etc/hosts", "fd00::53 server\n192.0.2.53 server4\n");
  char text[46] = "kept";
  EXPECT_EQ(0, ZARNNetLookupIP("server", text, sizeof text));
  EXPECT_STREQ("fd00::53", text);
  EXPECT_EQ(0, ZARNNetLookupIP("server4", text, 11));
  EXPECT_STREQ("192.0.2.53", text);
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetLookupIP("server4", text, 10));
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetLookupIP("ser ver", text, 46));
  EXPECT_STREQ("192.0.2.53", text);
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(-1, ZARNNetLookupIP("nobody.invalid", text, 46));
  EXPECT_NE(0, KOPACErrGet());
  Shell("ip address add 192.168.60.10/24 dev eth1 label eth1:2");
  const auto interfaceOf = [](const char* ip) {
    char ifname[16] = "none";
    KOPACErrSetEx(0, "", 0);
    return ZARNNetIP2If(ip, ifname, sizeof ifname) == 0 ? std::string(ifname)
                                                        : std::to_string(KOPACErrGet());
  };
  EXPECT_EQ("eth0", interfaceOf("192.168.50.10"));
  EXPECT_EQ("eth0", interfaceOf("fd00:0::10"));
  EXPECT_EQ("eth1", interfaceOf("192.168.60.10")) << "not its label";
  EXPECT_EQ("lo", interfaceOf("127.0.0.1"));
  EXPECT_EQ("eth0", interfaceOf("fe80::ff:fe00:10%eth0")) << Shell("ip -6 address");
  EXPECT_EQ(std::to_string(ZARNNETERR_NOT_FOUND), interfaceOf("fe80::ff:fe00:10%eth1"));
  EXPECT_EQ(std::to_string(ZARNNETERR_NOT_FOUND), interfaceOf("192.168.50.1"));
  EXPECT_EQ(std::to_string(ZARNNETERR_MALFORMED_ADDRESS), interfaceOf("192.168.50"));
  char small[4] = "x";
  REFUSED(ZARNNETERR_BAD_PARAMETER, ZARNNetIP2If("192.168.50.10", small, sizeof small));
  EXPECT_STREQ("x", small);
}

TEST_F(Lan, AWakeFrameIsBroadcastAndHasTheAddressSixteenTimes) {
  // What the port sends is heard on a packet socket of its own.
  const Descriptor capture(::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(0x0003)));
  sockaddr_ll port{};
  port.sll_family = AF_PACKET;
  port.sll_protocol = htons(0x0003);
  port.sll_ifindex = static_cast<int>(::if_nametoindex("eth0"));
  ASSERT_EQ(0, ::bind(capture.Get(), reinterpret_cast<const sockaddr*>(&port), sizeof port));
  REFUSED(ZARNNETERR_BAD_PARAMETER, KOPANetEtherWake("eth0", "00-1a:2B:3c:4d:5E"));
  ASSERT_EQ(0, KOPANetEtherWake("eth0", "00:1a:2B:3c:4d:5E"));
  const std::string mac("\x00\x1a\x2b\x3c\x4d\x5e", 6);
  std::string wanted = std::string(6, '\xFF') + std::string("\x02\x00\x00\x00\x00\x10\x08\x42", 8) +
                       std::string(6, '\xFF');
  for (int i = 0; i < 16; ++i)
    wanted += mac;
  bool seen = false;
  pollfd ready{capture.Get(), POLLIN, 0};
  while (!seen && ::poll(&ready, 1, 2000) == 1) {
    char frame[2048];
    const ssize_t length = ::recv(capture.Get(), frame, sizeof frame, 0);
    seen = length > 0 && std::string(frame, static_cast<std::size_t>(length)) == wanted;
  }
  EXPECT_TRUE(seen);
  for (const char* const bad : {"00:1a:2b:3c:4d", "00:1a:2b:3c:4d:5e:", "00:1a:2b:3c:4d:g0",
                                "0:1a:2b:3c:4d:5e7", "00.1a.2b.3c.4d.5e", "+1:1a:2b:3c:4d:5e"}) {
    REFUSED(ZARNNETERR_BAD_PARAMETER, KOPANetEtherWake("eth0", bad));
  }
  REFUSED(ZARNNETERR_NOT_FOUND, KOPANetEtherWake("eth9", "00:1a:2b:3c:4d:5e"));
  REFUSED(ZARNNETERR_COMMAND, KOPANetEtherWake("eth1", "00:1a:2b:3c:4d:5e"));  // down
}

TEST(Conflict, TheSecondHostsAddressIsInUseAndAFreeOneIsNot) {
  Shell("ip link add br0 type bridge; ip link set eth0 master br0 up; ip link set br0 up");
  Shell("ip address add 192.168.50.10/24 dev br0");
  EXPECT_EQ(1, ZARNIIpConflict("br0", "192.168.50.1"));
  EXPECT_EQ(0, ZARNIIpConflict("br0", "192.168.50.77"));
  EXPECT_EQ(0, ZARNIIpConflict("br0", "192.168.50.10")) << "its own";
}
