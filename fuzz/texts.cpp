// What is judged by its text alone: addresses, masks, names.
#include <zarnnetsdk/zarnnetsdk.h>

#include "frame/base/address.h"
#include "frame/base/text.h"
#include "fuzz.h"

namespace fuzz {
namespace {

FUZZ(addresses) {
  const std::string a = in.Text(), b = in.Text(), mask = in.Text();
  if (const auto ip = frame::ParseIpv4(a)) {
    REQUIRE(frame::DottedText(*ip) == a);
    ZARNNetGetAddrType(a.c_str());
    ZARNNetIsPrivateIP(a.c_str());
  }
  if (const auto ip = frame::ParseIpv6(a)) REQUIRE(frame::ParseIpv6(frame::Ipv6Text(*ip)) == ip);
  REQUIRE(BlKOPAIsv6IpAddrValid(a.c_str()) == 0 || a.find(':') != std::string::npos);
  REQUIRE(!frame::ParseHostAddress(a) || BlKOPAIsIpAddr(a.c_str()) == 1);
  for (const int family : {2, 10}) {
    REQUIRE(KOPAIsIpInRange(a.c_str(), a.c_str(), a.c_str(), family) != 0);
    KOPAIsIpInRange(a.c_str(), b.c_str(), mask.c_str(), family);
  }
  if (ZARNNetIsSameSubnet(a.c_str(), b.c_str(), mask.c_str()) == 1)
    REQUIRE(ZARNNetIsSameSubnet(b.c_str(), a.c_str(), mask.c_str()) == 1);
  ZARNNetIPv6IsSameSubnet(a.c_str(), b.c_str(), static_cast<unsigned>(in.Number()));
  if (frame::ParseAddress(a)) REQUIRE(!frame::IsUnfitAddress(a.c_str()));
  char ifname[8];
  ZARNNetIP2If(a.c_str(), ifname, sizeof ifname);
}

FUZZ(masks) {
  const std::string mask = in.Text();
  if (BlKOPAIsValidIpMask(mask.c_str()) == 1) {
    const int prefix = ZARNNetNetmaskToPrefix(mask.c_str());
    REQUIRE(prefix >= 1 && prefix <= 32);
    REQUIRE(frame::ParseMask(mask) == frame::MaskOf(static_cast<unsigned>(prefix)));
  }
  const auto subnet = frame::ParseSubnet(mask);
  REQUIRE(!subnet || (subnet->prefix >= 1 && subnet->prefix <= 32));
  const auto masked = frame::ParseSubnetWithMask(mask);
  REQUIRE(!masked || masked->prefix <= 32);
  REQUIRE(!frame::IsIpv6WithPrefix(mask) || mask.find(':') != std::string::npos);
  frame::OneBitsOf(mask);
}

FUZZ(names) {
  const std::string a = in.Text(), b = in.Text(), c = in.Text();
  using frame::NaturalLess;
  REQUIRE(!(NaturalLess(a, b) && NaturalLess(b, a)));
  REQUIRE(!(NaturalLess(a, b) && NaturalLess(b, c)) || NaturalLess(a, c));
  REQUIRE(BlKOPAIsHostname(a.c_str()) == 0 || !frame::IsUnfitName(a.c_str()));
  if (BlKOPAIsAtom(a.c_str()) == 1 && a.size() < 512) REQUIRE(BlKOPAIsDomain(a.c_str()) == 1);
  std::string joined;
  for (const std::string_view field : frame::SplitFields(a, b))
    joined.append(field).append("#");
  REQUIRE(joined.size() == a.size() + 1);
  for (const std::string_view word : frame::SplitWords(a, b.empty() ? " " : b))
    REQUIRE(!word.empty());
  if (const auto number = frame::ToNumber(a))
    REQUIRE(frame::ToNumber(std::to_string(*number)) == number);
  REQUIRE(frame::Trimmed(a).size() <= a.size());
  ZARNNetLinkAggrStringToMode(a.c_str());
  KOPANetEtherWake("lo", a.c_str());
}

}  // namespace
}  // namespace fuzz
