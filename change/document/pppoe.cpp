// SPDX-License-Identifier: Apache-2.0
// The PPPoE account and its client.
#include <array>
#include <string_view>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

constexpr char kEnable[] = "pppoe_enable";
constexpr char kClient[] = "pppoe-connect";
const Path kEnabled = "pppoe" / std::string("enabled");

Shape ShapeOf() {
  return Object("The PPPoE account",
                {{"enabled", Flag("Is the client meant to be up; live: does it run").Both()},
                 {"interface", Text("The port that it dials on", Format::kIfname, 15)},
                 {"user", Text("Name of the account", Format::kAny, 255)},
                 {"password", Text("Its password", Format::kAny, 31).Secret()},
                 {"mtu", Number("Largest packet of the link, in bytes", 68, 1500)},
                 {"default_route", Flag("Does the link become the default route")},
                 {"address", Text("Address of the link", Format::kIpv4, 15).ReadOnly()}});
}

// One word of a shell: 'bob', in which a quote is written '"'"'.
std::string Unquoted(std::string word) {
  constexpr std::string_view kQuote = "'\"'\"'";
  if (word.size() < 2 || word.front() != '\'' || word.back() != '\'') return word;
  word = word.substr(1, word.size() - 2);
  for (std::size_t at = 0; (at = word.find(kQuote, at)) != std::string::npos; ++at)
    word.replace(at, kQuote.size(), "'");
  return word;
}

// Another user than root may not read the file of the passwords, without which the library reads no
// account.
bool ReadAccount(PPPOE_CONF* conf, std::string* unread) {
  if (::geteuid() == 0) return PPPoEConfigGet(conf) == 0;
  const auto key = [unread](const char* name) {
    return KeyOf(frame::paths::kPppoeConf, name, unread);
  };
  Fill(key("ETH"), conf->eth);
  Fill(Unquoted(key("USER")), conf->user);
  Fill(key("MTU"), conf->mtu);
  conf->defaultroute = key("DEFAULTROUTE") == "yes" ? 1 : 0;
  return true;
}

Json Configured(const View& view) {
  if (KeyOf(frame::paths::kPppoeConf, "ETH", view.unread).empty())
    return nullptr;  // its reader would log that
  Wiped<PPPOE_CONF> account;
  PPPOE_CONF& conf = account.record;
  if (!ReadAccount(&conf, view.unread) || *conf.user == '\0') return nullptr;
  Json pppoe{{"enabled", KeyOf(frame::paths::kInfo, kEnable, view.unread) == "yes"},
             {"default_route", conf.defaultroute == 1}};
  Put(&pppoe, "interface", conf.eth);
  Put(&pppoe, "user", conf.user);
  if (Fits(conf.mtu, Format::kNumber)) pppoe["mtu"] = std::stol(conf.mtu);
  if (view.secrets) Put(&pppoe, "password", conf.password);
  return pppoe;
}

Json Live(const View&, const Json& configured) {
  if (!configured.is_object()) return nullptr;
  std::array<char, 256> room{};
  std::array<char, 16> ip{};
  Json pppoe{{"enabled", KOPACPs(kClient, room.data(), room.size()) > 0}};
  if (IsTrue(pppoe["enabled"]) && ZARNPPPoeNetInfoGet(ip.data(), int{ip.size()}, nullptr, 0) == 0)
    Put(&pppoe, "address", ip.data());
  return pppoe;
}

void Settle(Change* change, Findings* findings) {
  Json& wanted = change->wanted["pppoe"];
  if (!wanted.is_object()) {
    return findings->Add("pppoe", Path("/pppoe"), Severity::kUsage,
                         "an account cannot be removed: \"enabled\": false switches it off");
  }
  constexpr int kEthernetLessHeaders = 1492;
  if (!wanted.contains("mtu")) wanted["mtu"] = kEthernetLessHeaders;
  for (const char* field : {"interface", "user"}) {
    if (!wanted.contains(field))
      findings->Add("pppoe", Path("/pppoe") / field, Severity::kUsage,
                    "no account is stored yet: name its interface and its user");
  }
}

bool Store(const Json& pppoe) {
  Wiped<PPPOE_CONF> account;
  PPPOE_CONF& conf = account.record;
  Fill(TextOf(Member(pppoe, "interface")), conf.eth);
  Fill(TextOf(Member(pppoe, "user")), conf.user);
  Fill(TextOf(Member(pppoe, "password")), conf.password);
  Fill(std::to_string(NumberOf(Member(pppoe, "mtu"))), conf.mtu);
  conf.defaultroute = IsTrue(Member(pppoe, "default_route")) ? 1 : 0;
  return PPPoEConfigSet(&conf) == 0;
}

bool ConcernsAccount(const Change& change) {
  for (const char* field : {"interface", "user", "password", "mtu", "default_route"}) {
    if (change.Concerns(Path("/pppoe") / field)) return true;
  }
  return false;
}

void Plan(const Change& change, Steps* steps) {
  const Json pppoe = Member(change.wanted, "pppoe");
  if (ConcernsAccount(change)) {
    steps->push_back({Phase::kSettings,
                      Path("/pppoe"),
                      "store the PPPoE account",
                      "PPPoEConfigSet",
                      {frame::paths::kPppoeConf, frame::paths::kPapSecrets},
                      [pppoe] { return Store(pppoe); }});
  }
  const bool on = IsTrue(Member(pppoe, "enabled"));
  const bool restart = change.Restarts(Path("/pppoe"));
  if (!change.Concerns(kEnabled) && !restart) return;
  if (restart || !on) {
    steps->push_back({Phase::kServices,
                      kEnabled,
                      "end the PPPoE client",
                      "ZARNPPPoEService",
                      {frame::paths::kPppoeStop},
                      [] { return ZARNPPPoEService(0) == 0; }});
  }
  if (on) {
    steps->push_back({Phase::kServices,
                      kEnabled,
                      "dial with PPPoE",
                      "ZARNPPPoEService",
                      {frame::paths::kPppoeStart},
                      [] { return ZARNPPPoEService(1) == 0; }});
  }
}

bool Revive(const Change& change) {
  const bool ran = IsTrue(At(change.live, kEnabled));
  std::array<char, 256> room{};
  const bool runs = KOPACPs(kClient, room.data(), room.size()) > 0;
  return ran == runs || ZARNPPPoEService(ran ? 1 : 0) == 0;
}

void Await(const Change& change, const Json& live, std::vector<Remark>* awaited) {
  if (IsTrue(At(change.wanted, kEnabled)) && At(live, Path("/pppoe/address")).is_null() &&
      IsTrue(At(live, kEnabled)))
    awaited->push_back({Path("/pppoe/address"), "PPPoE has no address yet"});
}

}  // namespace

const Section kPppoe{"pppoe", ShapeOf, Configured, Live, Settle, Plan, Await, Revive};

}  // namespace change
