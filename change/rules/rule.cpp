// SPDX-License-Identifier: Apache-2.0
// Questions about the machine as it shall be.
#include "rules/rule.h"

#include <arpa/inet.h>
#include <array>
#include <set>
#include <sys/socket.h>

namespace change {

std::uint32_t NumberOfIpv4(const std::string& address) {
  in_addr number{};
  return ::inet_pton(AF_INET, address.c_str(), &number) == 1 ? ntohl(number.s_addr) : 0;
}

std::string Ipv4Text(std::uint32_t number) {
  const in_addr address{htonl(number)};
  std::array<char, INET_ADDRSTRLEN> text{};
  ::inet_ntop(AF_INET, &address, text.data(), text.size());
  return text.data();
}

std::optional<Subnet> SubnetOf(const Change& change, const std::string& ifname) {
  const Path interface = "interfaces" / ifname;
  if (At(change.before, interface).is_object() && At(change.wanted, interface).is_null())
    return std::nullopt;  // it goes with all that it has
  const Path path = interface / "ipv4";
  const bool live = !change.wish.contains(path) && At(change.live, path).contains("address");
  const Json& ipv4 = At(live ? change.live : change.wanted, path);
  if (!live && TextOf(Member(ipv4, "method")) != "static") return std::nullopt;
  const std::string address = TextOf(Member(ipv4, "address"));
  if (address.empty()) return std::nullopt;
  return Subnet{address, NumberOfIpv4(address),
                NumberOfIpv4(MaskOf(NumberOf(Member(ipv4, "prefix"))))};
}

std::vector<std::string> AllInterfaces(const Change& change) {
  std::set<std::string> names;
  for (const Json* const document : {&change.wanted, &change.live}) {
    const Json& interfaces = Member(*document, "interfaces");
    if (!interfaces.is_object()) continue;
    for (const auto& [name, interface] : interfaces.items())
      names.insert(name);
  }
  return {names.begin(), names.end()};
}

std::string MasterOf(const Change& change, const std::string& ifname) {
  const std::vector<Path> masters = change.MastersOf(ifname);
  if (masters.empty()) return {};
  const bool bond = masters.front().parent_pointer() == Path("/bonds");
  return (bond ? "the bond " : "the bridge ") + masters.front().back();
}

}  // namespace change
