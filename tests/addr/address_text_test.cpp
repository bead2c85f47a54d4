// SPDX-License-Identifier: Apache-2.0
// Addresses, masks and names as an administrator types them.
#include <cstring>
#include <memory>
#include <netinet/in.h>

#include <zarnnetsdk/addr.h>

#include "support/transcript.h"

using namespace test;

namespace {

using Texts = std::vector<const char*>;

void AskEach(const char* name, int (*predicate)(const char*), const Texts& texts) {
  for (const char* text : texts)
    TellCode(std::string(name) + " " + (text != nullptr ? text : "null"),
             [&] { return predicate(text); });
}
#define ASK_EACH(predicate, ...) AskEach(#predicate, predicate, Texts __VA_ARGS__)

TEST(AddressText, SplitStopsAtTheFirstPartThatIsNone) {
  for (const char* text :
       {"0x1F.010.0.0", "999.256.300.70000", "4294967297.0.0.0", "00000000000000000000001.2.3.4567",
        "", "1.2..3", "1.2.3.", "1.2.3.4x", "1.\n2.3.4", "1.-2.3.4", "08.1.1.1"}) {
    unsigned part[4] = {7, 7, 7, 7};
    TellCode(text, [&] { return cKOPAISepIP(text, part); });
    Say(std::to_string(part[0]) + " " + std::to_string(part[1]) + " " + std::to_string(part[2]) +
        " " + std::to_string(part[3]));
  }
}

TEST(AddressText, HostsAndPrivateBlocksEndWhereTheyShould) {
  ASK_EACH(BlKOPAIsIpAddr,
           {"0.0.0.0", "126.255.255.255", "128.0.0.0", "223.255.255.255",
            "1.2.3.0000000000000000000000000x, which is beyond the judged 31 characters",
            "127.0.0.1", "224.0.0.1", "256.1.1.1", "1.256.1.1", "1.1.256.1", "1.1.1.256", "1.2.3",
            "", "1.2.3.000000000000000000000004x", nullptr});
  ASK_EACH(ZARNNetIsPrivateIP, {"10.255.255.255", "127.0.0.1", "169.254.0.1", "172.16.0.0",
                                "172.31.255.255", "192.168.255.1", "11.0.0.0", "169.253.0.1",
                                "172.15.255.255", "172.32.0.0", "192.167.0.1"});
}

TEST(AddressText, MaskHasNoGapAndIsRewrittenWhereItStands) {
  const unsigned parts[][4] = {
      {128, 0, 0, 0}, {255, 255, 255, 255}, {0, 255, 255, 255}, {255, 255, 255, 1}, {256, 0, 0, 0}};
  for (const auto& part : parts)
    TellCode("parts from " + std::to_string(part[0]), [&] { return cKOPAICalMask(part); });
  ASK_EACH(BlKOPAIsValidIpMask,
           {"0.0.0.0", "255.0.255.0", "255.255.255.000000000000000000000\nGATEWAY=1", nullptr});
  ASK_EACH(ZARNNetNetmaskToPrefix, {"255.255.0.0", "255.0.255.0", "255.255.255.256", ""});
  for (const std::string text :
       {"255.255.255.0x0", "0377.0xFF.255.128", "0x0.0.0.0", "255.255.255."}) {
    const auto buffer = std::make_unique<char[]>(text.size() + 1);  // a longer result would be seen
    std::memcpy(buffer.get(), text.c_str(), text.size() + 1);
    TellCode(text, [&] { return BlKOPAIsIpMask(buffer.get()); });
    Say(buffer.get());
  }
}

TEST(AddressText, SubnetIsConvertedBothWays) {
  const auto convert = [](int (*function)(char*, char*), const char* text) {
    char in[64] = "";
    char out[64] = "";
    std::strcpy(in, text);
    TellCode(text, [&] { return function(in, out); });
    EXPECT_STREQ(in, text);
    const int result = function(in, nullptr);
    EXPECT_STREQ(in, result == 0 ? out : text) << "without a buffer the text is the result";
    Say(out);
  };
  for (const char* text : {"192.168.1.7/24", "10.1.2.3/32", "255.255.255.255/0x1", "192.168.1.7",
                           "192.168.1.7/0", "192.168.1.7/33", "192.168.1.7/24x"})
    convert(ErrKOPASubnetToIpMask, text);
  for (const char* text : {"192.168.1.7/255.255.255.0", "192.168.1.7", "192.168.1.7/0.0.0.0"})
    convert(ErrKOPAIpMaskToSubnet, text);
}

TEST(AddressText, NamesHoldOnlyTheirCharacters) {
  ASK_EACH(BlKOPAIsHostname, {"a", "_abc", "a_b-", "abcdefghijklmno", nullptr, "", "-abc", "1abc",
                              "a.b", "a\n", "abcdefghijklmnop", "na\xc3\xafve"});
  for (int c = 1; c < 256; ++c) {
    const char text[] = {'a', static_cast<char>(c), '\0'};
    const bool refused = c <= ' ' || std::strchr("\"(),.:;<>[]\\@", c) != nullptr;
    EXPECT_EQ(BlKOPAIsAtom(text), refused ? 0 : 1) << c;
  }
  const std::string tooLong = std::string(511, 'a') + "\nsearch evil";
  ASK_EACH(BlKOPAIsDomain, {"example.com", "localhost", tooLong.c_str(), "", ".a", "a.",
                            "example..com", "exa mple.com", tooLong.substr(1).c_str()});
}

TEST(AddressText, V6MayCarryAPrefixLength) {
  const std::string tooLong = std::string(500, '0') + "::1/64";
  ASK_EACH(BlKOPAIsv6IpAddrValid, {"::", "::ffff:192.168.1.1", "2001:db8::/32", "::1/0", "::1/128",
                                   "::1/007", "", "192.168.1.1", "::1/", "::1/129", "::1/0064",
                                   "::1/-1", "::1/6 ", "::1/64/64", "/64", tooLong.c_str()});
}

TEST(AddressText, SubnetsAreComparedWithinOneFamily) {
  const struct {
    const char* fault;
    Texts texts;  // two addresses and the mask
  } rows[] = {
      {"host bits compared", {"192.168.1.1", "192.168.1.254", "255.255.255.0"}},
      {"network bits left out", {"192.168.1.1", "192.168.2.1", "255.255.255.0"}},
      {"IPv6 cut to 32 bits", {"2001:db8::1", "2001:db8:0:0:1::1", "ffff:ffff:ffff:ffff:ffff::"}},
      {"IPv6 host bits compared", {"2001:db8::1", "2001:db8::ffff:1", "ffff:ffff:ffff:ffff::"}},
      {"families mixed", {"1.2.3.4", "::1", "0.0.0.0"}},
      {"mask of the other family", {"1.2.3.4", "1.2.3.4", "::"}},
      {"null", {"1.2.3.4", "1.2.3.4", nullptr}},
  };
  for (const auto& [fault, texts] : rows)
    TellCode(fault, [&t = texts] { return ZARNNetIsSameSubnet(t[0], t[1], t[2]); });
}

TEST(AddressText, RangeHoldsItsBoundsInEitherOrder) {
  for (const Texts& texts : {Texts{"10.0.0.5", "10.0.0.1", "10.0.1.0"},
                             {"200.0.0.1", "10.0.0.1", "220.0.0.1"},
                             {"10.0.0.1", "10.0.0.1", "10.0.0.9"},
                             {"::81", "::7f", "::81"},
                             {"::1:1", "::1", "::1:0"},
                             {"::1", "::1", "10.0.0.9"}}) {
    const int family = std::strchr(texts[0], ':') != nullptr ? AF_INET6 : AF_INET;
    const auto within = Tell(std::string(texts[0]) + " from " + texts[1] + " to " + texts[2],
                             [&] { return KOPAIsIpInRange(texts[0], texts[1], texts[2], family); });
    EXPECT_EQ(KOPAIsIpInRange(texts[0], texts[2], texts[1], family), within);
  }
  TELL(KOPAIsIpInRange("10.0.0.1", "::", "::1", AF_UNIX));
  ASK_EACH(ZARNNetGetAddrType, {"010.0.0.1", "", nullptr, "::ffff:10.0.0.1"});
  EXPECT_STREQ(ZARNNetNtoa(0xC0A80107), "192.168.1.7");
}

}  // namespace
