// SPDX-License-Identifier: Apache-2.0
#include "steps/confirm_time.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "document/machine.h"
#include "frame/model/paths.h"
#include "steps/settings.h"

namespace change {
namespace {

constexpr char kClientSettings[] = "/etc/dhclient/dhclient.conf";

std::string WordIn(const std::string& path) {
  std::ifstream file(path);
  std::string word;
  file >> word;
  return word;
}

// A port with a spanning tree listens and learns before it hands anything on.
long OfBridges(const Change& change) {
  constexpr long kListenAndLearn = 30;
  const auto names = change.NamedIn(Path("/bridges"));
  const bool tree = std::any_of(names.begin(), names.end(), [](const std::string& name) {
    return WordIn(frame::paths::SysNet(name, "/bridge/stp_state")) == "1";
  });
  return tree ? kListenAndLearn : 0;
}

// "timeout 8;": how long the client asks before it gives up for a while.
long OfLeases(const Change& change) {
  constexpr long kWithout = 60;
  const auto names = change.NamedIn(Path("/interfaces"));
  const bool leased = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    const Path path = "interfaces" / name / "ipv4";
    return change.Concerns(path) && TextOf(At(change.wanted, path / "method")) == "dhcp";
  });
  if (!leased) return 0;
  std::ifstream file(kClientSettings);
  for (std::string line; std::getline(file, line);) {
    std::istringstream stream(line);
    std::string word;
    if (long seconds = 0; stream >> word >> seconds && word == "timeout" && seconds > 0)
      return seconds;
  }
  return kWithout;
}

// A partner is given up for after three of its messages.
long OfPartners(const Change& change) {
  constexpr long kSlow = 90;
  constexpr long kFast = 3;
  long most = 0;
  for (const std::string& name : change.NamedIn(Path("/bonds"))) {
    if (TextOf(At(change.wanted, "bonds" / name / "mode")) != "802.3ad") continue;
    const bool fast = WordIn(frame::paths::SysNet(name, "/bonding/lacp_rate")) == "fast";
    most = std::max(most, fast ? kFast : kSlow);
  }
  return most;
}

}  // namespace

long SecondsToConfirm(const Change& change) {
  const long asked = change.options.confirm.value_or(0);
  if (asked > 0) return asked;
  return ConfirmSeconds() + OfBridges(change) + OfLeases(change) + OfPartners(change);
}

}  // namespace change
