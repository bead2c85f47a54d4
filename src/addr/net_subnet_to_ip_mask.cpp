// SPDX-License-Identifier: Apache-2.0
// Subnets written with a prefix length and with a netmask, one turned into the other.
#include <string>

#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

int Answer(const std::string& subnet, char* szIn, char* szOut) {
  constexpr std::size_t kSize = 64;  // of either text, terminator included
  CopyText(subnet, szOut != nullptr ? szOut : szIn, kSize);
  return 0;
}

}  // namespace

int ErrKOPASubnetToIpMask(char* szIn, char* szOut) {
  return Boundary(-1, [&]() -> int {
    if (szIn == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto subnet = ParseSubnet(szIn);
    if (!subnet) return -1;
    return Answer(DottedText(subnet->network) + '/' + DottedText(subnet->Mask()), szIn, szOut);
  });
}

int ErrKOPAIpMaskToSubnet(char* szIn, char* szOut) {
  return Boundary(-1, [&]() -> int {
    if (szIn == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto subnet = ParseSubnetWithMask(szIn);
    if (!subnet) return -1;
    return Answer(DottedText(subnet->network) + '/' + std::to_string(subnet->prefix), szIn, szOut);
  });
}
