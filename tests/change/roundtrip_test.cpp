// SPDX-License-Identifier: Apache-2.0
// Machines with sections combined at random: what is read from one makes an empty appliance the
// same machine, and then the next one. A failure names the seed: ZARNNET_SEED=N makes it alone.
// ZARNNET_SEEDS=20 makes 200 machines in place of 20.
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <random>
#include <zarnnetchange/change.h>

#include "support/appliance.h"
#include "wish.h"
#include "wish_between.h"

using namespace test;
using Json = nlohmann::json;

namespace {

unsigned NumberIn(const char* variable, unsigned without) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? static_cast<unsigned>(std::stoul(text)) : without;
}

// What makes one machine, from its seed alone.
class Generator {
 public:
  explicit Generator(unsigned seed) : numbers_(seed) {}

  Json Machine() {
    machine_ = {{"version", 1}};
    free_ = {"eth0", "eth1", "eth2", "eth3"};
    if (Chance(2)) machine_["host"] = {{"name", "nas" + std::to_string(Below(100))}};
    if (Drivers() && Chance(2)) AddBond();
    if (Drivers() && Chance(3)) AddVlan();
    if (Chance(2)) AddBridge();
    if (Drivers() && Chance(2)) AddVlan();
    for (const std::string& ifname : free_)
      AddInterface(ifname);
    AddNames();
    AddServices();
    return machine_;
  }

  static bool Drivers() {
    static const bool drivers =
        Shell(
            "ip link add b0 type bond && ip link add link eth0 name e.1 type vlan id 1 && echo y;"
            "ip link del e.1; ip link del b0")
            .ends_with("y\n");
    return drivers;
  }

 private:
  unsigned Below(unsigned limit) { return static_cast<unsigned>(numbers_() % limit); }
  bool Chance(unsigned of) { return Below(of) == 0; }
  template <class Value>
  Value OneOf(std::vector<Value> values) {
    return values[Below(static_cast<unsigned>(values.size()))];
  }
  // Something else is made of it.
  std::string Take() {
    const auto at = free_.begin() + Below(static_cast<unsigned>(free_.size()));
    std::string ifname = *at;
    free_.erase(at);
    return ifname;
  }

  void AddBond() {
    const std::string first = Take();
    const std::string mode = OneOf<std::string>({"active-backup", "802.3ad", "balance-xor"});
    machine_["bonds"]["bond0"] = {{"mode", mode}, {"slaves", {first, Take()}}};
    free_.emplace_back("bond0");
  }

  void AddBridge() {
    Json ports{Take()};
    if (free_.size() > 1 && Chance(2)) ports.push_back(Take());
    machine_["bridges"]["br0"] = {{"ports", ports},
                                  {"role", OneOf<std::string>({"bridge", "local_lan"})}};
    free_.emplace_back("br0");
  }

  void AddVlan() {
    const std::string parent = Take();
    if (machine_.value("vlans", Json::object()).contains(parent))
      return free_.push_back(parent);  // no second tag
    const std::string name = parent + "." + std::to_string(2 + Below(4000));
    machine_["vlans"][name] = Json::object();
    free_.push_back(name);
  }

  // Subnets do not meet: the third byte is the interface's.
  void AddInterface(const std::string& ifname) {
    Json& interface = machine_["interfaces"][ifname] = Json::object();
    const std::string net = "10." + std::to_string(Below(200)) + "." + std::to_string(++nets_);
    const unsigned method = Below(4);
    if (method > 1) {
      interface["ipv4"] = {{"address", net + ".1"}, {"prefix", 24 + Below(3)}};
      served_[ifname] = net;
    } else {
      interface["ipv4"] = {{"method", method == 0 ? "none" : "dhcp"}};
    }
    if (Chance(3))
      interface["ipv6"] = {{"method", "static"}, {"address", "fd00::" + net.substr(3)}};
    if (Chance(3)) interface["ipv6"] = {{"method", OneOf<std::string>({"off", "auto"})}};
    if (interface.contains("ipv6") && interface["ipv6"]["method"] == "static") {
      interface["ipv6"]["address"] = "fd00:" + std::to_string(nets_) + "::10";
      interface["ipv6"]["prefix"] = 64;
    }
    if (Chance(3)) interface["mtu"] = 1300 + Below(200);
    if (Chance(4)) interface["on_boot"] = Chance(2);
    if (Chance(4)) interface["block"] = Json{OneOf<std::string>({"ha", "aha", "virtual"})};
  }

  void AddNames() {
    if (Chance(2)) {
      machine_["dns"] = {{"servers", {"192.0.2." + std::to_string(1 + Below(9))}}};
      if (Chance(2)) machine_["dns"]["servers"].push_back("2001:db8::53");
    }
    if (!served_.empty() && Chance(2))
      machine_["routes"] = {{"gateway", served_.begin()->second + ".2"}};
  }

  void AddServices() {
    machine_["pppoe"] = {{"interface", "eth0"},
                         {"user", "user" + std::to_string(Below(9))},
                         {"password", "a'\"\\ $%s" + std::to_string(Below(9))},
                         {"mtu", 1400 + Below(90)},
                         {"default_route", Chance(2)}};
    machine_["tunnel"] = {{"server", "b" + std::to_string(Below(9)) + ".example"}};
    if (Chance(2)) machine_["tunnel"].update({{"user", "bob"}, {"password", "Hidden 1"}});
    machine_["pppoe_relay"]["eth1"] = {{"enabled", false}, {"server", "eth3"}};
    if (Chance(2)) return;
    for (const auto& [ifname, net] : served_)
      machine_["dhcp_server"]["interfaces"][ifname]["ipv4"] = Served(net);
    if (Chance(2)) machine_["dhcp_server"]["vendors"]["Class A"] = {{"43", "01:04:00"}};
    if (!served_.empty()) machine_["dhcp_server"]["enabled"] = Chance(2);
  }

  Json Served(const std::string& net) {
    Json subnet{
        {"start", net + ".20"}, {"end", net + ".30"}, {"prefix", 26}, {"lease", 120 + Below(9999)}};
    if (Chance(2)) subnet["dns"] = {net + ".1", "192.0.2.9"};
    if (Chance(2)) subnet["router"] = net + ".1";
    if (Chance(2)) subnet["domain"] = "lan.example";
    if (Chance(2)) subnet["options"] = {{"mtu", 1400}, {"ntp-server", {net + ".1", "192.0.2.8"}}};
    Json served{{"enabled", true}, {"subnets", {{"0", subnet}}}};
    if (Chance(3)) served["subnets"]["0"]["enabled"] = false;
    return served;
  }

  std::mt19937 numbers_;
  Json machine_;
  std::vector<std::string> free_;
  std::map<std::string, std::string> served_;
  unsigned nets_ = 0;
};

// The appliance as it was delivered, its files and its kernel.
void Reset() {
  const std::string folders =
      "/etc/sysconfig /etc/dhcpd /etc/ppp /etc/gogoc /etc/dhclient /etc/zarnservice";
  const std::string files = "/etc/zarninfo.conf /etc/hostname /etc/hosts /etc/resolv.conf";
  Shell(
      "[ -e /tmp/delivered.tar ] || { echo delivered > /etc/hostname; tar -cf "
      "/tmp/delivered.tar " +
      folders + " " + files +
      " 2>/tmp/tar; };"
      "initctl stop dhcp-server; for i in 0 1 2 3; do initctl stop dhcp-client IFACE=eth$i; done;"
      "for link in $(ip -o link | sed -n 's/^[0-9]*: \\([^:@]*\\).*/\\1/p'); do case $link in lo) "
      ";;"
      " eth*.*|bond*|br*) ip link del $link ;;"
      " eth*) ip link set $link nomaster; ip addr flush dev $link; ip link set $link mtu 1500;"
      " ip link set $link down ;; esac; done; ip route flush table main; hostname delivered;"
      "rm -rf " +
      folders + " /etc/resolv.conf.*; tar -C / -xf /tmp/delivered.tar");
}

const Json& Member(const Json& object, const char* name) {
  static const Json none;
  return object.contains(name) ? object[name] : none;
}
const Json& Member(const Json& object, const std::string& name) {
  return Member(object, name.c_str());
}

Json Read() {
  return State(R"({"secrets":true})");
}

Json Apply(const Json& wish) {
  char* text = nullptr;
  const std::string options = R"({"insist":true,"probe":false})";
  ZARNNetChangeApply(wish.dump().c_str(), options.c_str(), nullptr, nullptr, &text);
  Json report = Json::parse(text != nullptr ? text : "{}");
  ZARNNetChangeFree(text);
  EXPECT_EQ(report["result"], ZARNNETCHANGE_DONE)
      << wish << "\n"
      << report["reason"] << report["findings"] << report["differences"] << report["steps"]
      << report["repaired"];
  return report;
}

// IPv6 that is off is said by "off", or by nothing where nobody ever said more. Fixed name servers
// stay stored while learned ones are used, subnets of an interface that is not served any more too.
Json Plain(Json machine) {
  if (machine["dns"]["mode"] == "auto") machine["dns"].erase("servers");
  Json& server = machine["dhcp_server"];
  const Json interfaces = server["interfaces"];
  for (const auto& [ifname, served] : interfaces.items())
    if (served.at("ipv4").at("enabled") == false) server["interfaces"].erase(ifname);
  if (server["interfaces"].empty()) server.erase("interfaces");
  for (Json& interface : machine["interfaces"]) {
    if (interface.contains("ipv6") && interface["ipv6"]["method"] == "off") interface.erase("ipv6");
  }
  return machine;
}

// What cannot be removed is switched off.
Json SwitchedOff(Json wish, const Json& machine) {
  Json& server = wish["dhcp_server"];
  Json off;
  for (const auto& [ifname, served] :
       Member(Member(machine, "dhcp_server"), "interfaces").items()) {
    const Json& wished = Member(Member(server, "interfaces"), ifname);
    const bool goes = server.contains("interfaces") && wished.is_null() &&
                      (server["interfaces"].is_null() || server["interfaces"].contains(ifname));
    if (goes) off[ifname]["ipv4"]["enabled"] = false;
  }
  if (server.contains("interfaces") && server["interfaces"].is_null()) server.erase("interfaces");
  if (!off.is_null()) server["interfaces"].update(off);
  if (server.is_null()) wish.erase("dhcp_server");
  return wish;
}

void ExpectSame(const char* when, const Json& machine, const Json& expected) {
  EXPECT_EQ(Json::diff(Plain(expected), Plain(machine)).dump(1), "[]") << when;
}

void GoRound(unsigned round) {
  constexpr unsigned kMachines = 2;
  const unsigned machines = NumberIn("ZARNNET_SEEDS", kMachines);
  const unsigned first = NumberIn("ZARNNET_SEED", round * machines);
  // Nobody leases an address here: a job that waited for one would take seconds each time.
  Shell(
      "for f in /proc/sys/net/ipv6/conf/*/dad_transmits; do echo 0 >$f; done;"
      "sed -i /^await/d /etc/init/dhcp-client.conf");
  Json previous;
  for (unsigned seed = first; seed < first + machines; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::cout << "seed " << seed << "\n";
    Reset();
    Apply(Generator(seed).Machine());
    const Json machine = Read();
    EXPECT_EQ(Apply(machine)["steps"], Json::array());
    Reset();
    Apply(machine);
    ExpectSame("on an empty appliance", Read(), machine);
    if (!previous.is_null()) {
      Apply(SwitchedOff(tool::WishBetween(machine, previous), machine));
      ExpectSame("after the machine of the seed before", Read(), previous);
    }
    if (::testing::Test::HasFailure()) return;
    previous = machine;
  }
}

}  // namespace

// Cases of their own run beside each other.
class RoundTrip : public ::testing::TestWithParam<unsigned> {};
TEST_P(RoundTrip, MakesTheSameMachineAgain) {
  GoRound(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Seeds, RoundTrip, ::testing::Range(0U, 10U));
