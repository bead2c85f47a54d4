// SPDX-License-Identifier: Apache-2.0
// The table of rules. Those that say what there is come first: the others may rely on it.
#include "rules/rules.h"

#include <algorithm>

#include "rules/rule.h"

namespace change {
namespace {

bool IsAllowed(const Change& change, const Findings& findings) {
  const auto& list = findings.List();
  return std::all_of(list.begin(), list.end(), [&](const Finding& finding) {
    return finding.severity == Severity::kWarning ||
           (finding.severity == Severity::kInsistable && change.options.insist);
  });
}

}  // namespace

void JudgeByRules(const Change& change, Findings* findings) {
  constexpr Rule kRules[] = {
      LoopbackStays,        NamesExist,         NewNamesAreFree,        TopologyIsSupported,
      MembersHaveNoAddress, MembersAreFree,     ParentsAreFree,         NobodyStandsOnWhatGoes,
      AddressOfAHost,       OneSubnetAPort,     GatewayIsReached,       GatewayStaysReached,
      MtuIsCarried,         RangeFitsItsSubnet, RangeIsTheServersAlone, ServerTakesTheValues,
      OnlyWhatIsOnRestarts, OwnPathStays,
  };
  for (const Rule rule : kRules)
    rule(change, findings);
  // They ask the network and the server, which takes its time: only for what nothing else speaks
  // against.
  if (findings->List().empty()) AddressIsFree(change, findings);
  if (IsAllowed(change, *findings)) ServerTakesTheSettings(change, findings);
}

}  // namespace change
