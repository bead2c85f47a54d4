// SPDX-License-Identifier: Apache-2.0
// The table of rules. Those that say what there is come first: the others may rely on it.
#include "rules/rules.h"

#include "rules/rule.h"

namespace change {

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
  // It asks the network, which takes its time: only for what nothing else speaks against.
  if (findings->List().empty()) AddressIsFree(change, findings);
}

}  // namespace change
