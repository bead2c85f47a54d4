// SPDX-License-Identifier: Apache-2.0
#include "steps/order.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace change {
namespace {

// How many are below an interface, one made of the other: a VLAN on a bridge of bonds has three.
class Heights {
 public:
  explicit Heights(const Json& document) : document_(document) {}

  int Of(const std::string& ifname, int above = 0) {
    constexpr int kMost = 64;  // no machine is made so
    if (const auto known = heights_.find(ifname); known != heights_.end()) return known->second;
    heights_[ifname] = 0;  // of one in a ring
    int height = 0;
    if (above == kMost) return height;
    for (const std::string& part : PartsOf(ifname))
      height = std::max(height, 1 + Of(part, above + 1));
    return heights_[ifname] = height;
  }

 private:
  [[nodiscard]] std::vector<std::string> PartsOf(const std::string& ifname) const {
    auto parts = TextsOf(At(document_, "bonds" / ifname / "slaves"));
    for (std::string& port : TextsOf(At(document_, "bridges" / ifname / "ports")))
      parts.push_back(std::move(port));
    const Json& parent = At(document_, "vlans" / ifname / "parent");
    if (!parent.is_null()) parts.push_back(TextOf(parent));
    return parts;
  }

  const Json& document_;
  std::map<std::string, int> heights_;
};

}  // namespace

Steps InTurn(const Change& change, Steps steps) {
  using Turn = std::tuple<Phase, int, Phase>;
  Heights before(change.before);
  Heights wanted(change.wanted);
  const auto turnOf = [&](const Step& step) -> Turn {
    if (step.phase >= Phase::kRemoveBridge && step.phase <= Phase::kRemoveBond)
      return {Phase::kRemoveBridge, -before.Of(step.path.back()), step.phase};
    if (step.phase >= Phase::kMakeBond && step.phase <= Phase::kMakeBridge)
      return {Phase::kMakeBond, wanted.Of(step.path.back()), step.phase};
    return {step.phase, 0, step.phase};
  };
  std::stable_sort(steps.begin(), steps.end(),
                   [&](const Step& a, const Step& b) { return turnOf(a) < turnOf(b); });
  return steps;
}

}  // namespace change
