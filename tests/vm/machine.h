// SPDX-License-Identifier: Apache-2.0
// What the scenarios on the stock kernel ask of programs that are not this library's.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sstream>
#include <string>

#include <zarnnetsdk/zarnnetsdk.h>

#include "support/appliance.h"

namespace test {

// An emulated machine is slow, and drivers tell of carrier and partners when they get to it.
inline bool Within(int seconds, const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) return false;
    ::poll(nullptr, 0, 50);
  }
  return true;
}

inline Lines Words(const std::string& text) {
  std::istringstream stream(text);
  return Lines(std::istream_iterator<std::string>(stream), {});
}

// A line of set-up, which has to succeed as a whole.
inline void Do(const std::string& commands) {
  const std::string output = Shell("(set -e; " + commands + ") && echo done");
  EXPECT_TRUE(output.ends_with("done\n")) << commands << "\n" << output;
}

// ---- what the kernel has, by iproute2

// What "ip -j -d ARGUMENTS" says.
inline nlohmann::json Ip(const std::string& arguments) {
  const auto answer = nlohmann::json::parse(Shell("ip -j -d " + arguments), nullptr, false);
  if (answer.is_discarded()) ADD_FAILURE() << "ip " << arguments;
  return answer.is_array() ? answer : nlohmann::json::array();
}

inline nlohmann::json Link(const std::string& ifname) {
  return Ip("address show dev " + ifname)[0];
}

// The first IPv4 address.
inline std::string Address(const std::string& ifname) {
  const auto links = Ip("-4 address show dev " + ifname);
  return links.empty() || links[0]["addr_info"].empty()
             ? ""
             : links[0]["addr_info"][0].value("local", "");
}

// What has this master, by name.
inline Lines Members(const std::string& master) {
  Lines names;
  for (const auto& link : Ip("link show master " + master))
    names.push_back(link["ifname"]);
  std::sort(names.begin(), names.end());
  return names;
}

// ---- the second host, at the other ends of the cables

inline bool SecondHostReaches(const std::string& address) {
  return Within(20, [&] {
    return Contains(Shell("ip netns exec lan ping -c 1 -W 1 " + address), "1 received");
  });
}

// A VLAN of the second host on the cable of eth0, which leaves its bridge.
inline void MakeTaggedSide(int id, const std::string& address) {
  Do("ip -n lan link set lan0 nomaster; ip -n lan link add link lan0 name tagged type vlan id " +
     std::to_string(id) + "; ip -n lan link set tagged up; ip -n lan address add " + address +
     " dev tagged");
}

// ---- the library's records

inline Lines Slaves(const ZARNLINKAGGROPT& bond) {
  return Lines(bond.rgszSlave, bond.rgszSlave + bond.cSlave);
}

// A call that makes a list: how many entries it counts, and those that it names.
using Counted = std::pair<int, Lines>;
template <typename Call>
Counted ListOf(const Call& call) {
  List list;
  const int count = call(list.Out());
  return {count, list.Texts()};
}

}  // namespace test
