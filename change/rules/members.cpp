// SPDX-License-Identifier: Apache-2.0
// Rules about what is part of something else.
#include "rules/rule.h"

namespace change {
namespace {

struct Kind {
  const char* section;
  const char* members;
};
constexpr Kind kKinds[] = {{"bonds", "slaves"}, {"bridges", "ports"}};

}  // namespace

void MembersHaveNoAddress(const Change& change, Findings* findings) {
  for (const std::string& ifname : change.NamedIn(Path("/interfaces"))) {
    const std::string master = MasterOf(change, ifname);
    for (const char* family : {"ipv4", "ipv6"}) {
      const Path path = "interfaces" / ifname / family;
      const std::string method = TextOf(At(change.wanted, path / "method"));
      if (!change.Concerns(path) || method == "none" || method == "off") continue;
      if (!master.empty()) {
        findings->Add("member_address", path, Severity::kRefused,
                      ifname + " is part of " + master + " and has no address of its own: give " +
                          master.substr(master.rfind(' ') + 1) + " the address");
      } else if (const auto vlans = change.VlansOver(ifname); !vlans.empty()) {
        findings->Add("parent_address", path, Severity::kInsistable,
                      ifname + " carries the VLAN " + vlans.front() +
                          ", which has its address: give " + vlans.front() + " the address");
      }
    }
  }
}

void MembersAreFree(const Change& change, Findings* findings) {
  for (const Kind& kind : kKinds) {
    for (const std::string& name : change.NamedIn(Path() / kind.section)) {
      const Path path = kind.section / name;
      if (!change.Concerns(path)) continue;
      for (const std::string& member : TextsOf(At(change.wanted, path / kind.members))) {
        const auto vlans = change.VlansOver(member);
        if (change.MastersOf(member).size() > 1) {
          findings->Add("member_in_use", path / kind.members, Severity::kRefused,
                        member +
                            " is part of another bond or bridge: take it out there, also in "
                            "the same change");
        } else if (!vlans.empty()) {
          findings->Add("member_in_use", path / kind.members, Severity::kRefused,
                        member + " carries the VLAN " + vlans.front() +
                            ": remove that first, or "
                            "put the VLAN over " +
                            name);
        } else if (member == name || change.kernel.Link(member) == nullptr) {
          continue;  // a name that is none is found by its own rule
        } else if (change.kernel.Link(member)->kind == "bond" &&
                   std::string(kind.section) == "bonds") {
          findings->Add("member_in_use", path / kind.members, Severity::kRefused,
                        member + " is a bond itself: name its ports");
        }
      }
    }
  }
}

void ParentsAreFree(const Change& change, Findings* findings) {
  for (const std::string& name : change.NamedIn(Path("/vlans"))) {
    const Path path = "vlans" / name;
    const std::string parent = TextOf(At(change.wanted, path / "parent"));
    if (parent.empty() || !change.Concerns(path)) continue;
    const std::string master = MasterOf(change, parent);
    const auto refuse = [&](const std::string& sentence) {
      findings->Add("parent_in_use", path, Severity::kRefused, sentence);
    };
    if (!master.empty())
      refuse(parent + " is part of " + master + ": put the VLAN over " +
             master.substr(master.rfind(' ') + 1));
    const auto vlans = change.VlansOver(parent);
    if (vlans.size() > 1) {
      const std::string other = vlans[0] == name ? vlans[1] : vlans[0];
      refuse(parent + " carries " + other + " already, and one VLAN is all it can: remove " +
             other);
    }
    if (At(change.wanted, "vlans" / parent).is_object())
      refuse(parent + " is a VLAN itself: put this one over " +
             TextOf(At(change.wanted, "vlans" / parent / "parent")));
  }
}

void NobodyStandsOnWhatGoes(const Change& change, Findings* findings) {
  for (const char* section : {"bonds", "bridges", "vlans"}) {
    for (const std::string& name : change.NamedIn(Path() / section)) {
      if (!At(change.wanted, section / name).is_null()) continue;
      const std::string master = MasterOf(change, name);
      const auto vlans = change.VlansOver(name);
      const std::string user = vlans.empty() ? master : "the VLAN " + vlans.front();
      if (user.empty()) continue;
      findings->Add("still_used", section / name, Severity::kRefused,
                    user + " stands on " + name + ": remove it first, or in the same change");
    }
  }
}

}  // namespace change
