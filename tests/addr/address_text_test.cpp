// Addresses, masks and names as an administrator types them.
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <ostream>
#include <string>
#include <syslog.h>
#include <vector>

#include <zarnnetsdk/addr.h>

#include "support/appliance.h"

namespace {

struct Outcome {
  int result;
  unsigned code;
  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.result << " with 0x" << std::hex << outcome.code << std::dec;
}

template <class Call>
Outcome OutcomeOf(Call call) {
  KOPACErrSetEx(0, "", 0);
  const int result = call();
  return {result, KOPACErrGet()};
}

using Texts = std::vector<const char*>;

// Every text gets this answer.
void ExpectEach(int (*predicate)(const char*), const Texts& texts, const Outcome& outcome) {
  for (const char* text : texts) {
    EXPECT_EQ(OutcomeOf([&] { return predicate(text); }), outcome)
        << (text != nullptr ? text : "null");
  }
}

TEST(AddressText, SplitStopsAtTheFirstPartThatIsNone) {
  using Parts = std::vector<unsigned>;
  struct {
    const char* fault;
    const char* text;
    Outcome outcome;
    Parts parts;
  } const rows[] = {
      {"C notation lost", "0x1F.010.0.0", {4, 0}, {31, 8, 0, 0}},
      {"range judged here", "999.256.300.70000", {4, 0}, {999, 256, 300, 70000}},
      {"large number wrapped", "4294967297.0.0.0", {4, 0}, {4294967295, 0, 0, 0}},
      {"long text not cut", "00000000000000000000001.2.3.4567", {4, 0}, {1, 2, 3, 456}},
      {"empty text", "", {0, 0x1000}, {}},
      {"two dots in a row", "1.2..3", {2, 0x1000}, {1, 2}},
      {"last part missing", "1.2.3.", {3, 0x1000}, {1, 2, 3}},
      {"text behind the last part", "1.2.3.4x", {3, 0x1000}, {1, 2, 3}},
      {"newline skipped", "1.\n2.3.4", {1, 0x1000}, {1}},
      {"sign taken", "1.-2.3.4", {1, 0x1000}, {1}},
      {"digit beyond octal", "08.1.1.1", {1, 0x1000}, {0}},
      {"null", nullptr, {0, 0x0D00}, {}},
  };
  for (const auto& row : rows) {
    unsigned part[4] = {};
    EXPECT_EQ(OutcomeOf([&] { return cKOPAISepIP(row.text, part); }), row.outcome) << row.fault;
    EXPECT_EQ(Parts(part, part + row.parts.size()), row.parts) << row.fault;
  }
}

TEST(AddressText, HostsAndPrivateBlocksEndWhereTheyShould) {
  ExpectEach(BlKOPAIsIpAddr,
             {"0.0.0.0", "126.255.255.255", "128.0.0.0", "223.255.255.255",
              "1.2.3.0000000000000000000000000x, which is beyond the judged 31 characters"},
             {1, 0});
  ExpectEach(BlKOPAIsIpAddr,
             {"127.0.0.1", "224.0.0.1", "256.1.1.1", "1.256.1.1", "1.1.256.1", "1.1.1.256", "1.2.3",
              "", "1.2.3.000000000000000000000004x"},
             {0, 0x1000});
  ExpectEach(BlKOPAIsIpAddr, {nullptr}, {0, 0x0D00});
  ExpectEach(ZARNNetIsPrivateIP,
             {"10.255.255.255", "127.0.0.1", "169.254.0.1", "172.16.0.0", "172.31.255.255",
              "192.168.255.1"},
             {1, 0});
  ExpectEach(ZARNNetIsPrivateIP,
             {"11.0.0.0", "169.253.0.1", "172.15.255.255", "172.32.0.0", "192.167.0.1"}, {0, 0});
}

TEST(AddressText, MaskHasNoGap) {
  for (int prefix = 1; prefix <= 32; ++prefix) {
    const std::uint32_t mask = ~std::uint32_t{0} << (32 - prefix);
    const unsigned part[4] = {mask >> 24, mask >> 16 & 255, mask >> 8 & 255, mask & 255};
    EXPECT_EQ(OutcomeOf([&] { return cKOPAICalMask(part); }), (Outcome{prefix, 0}));
  }
  const unsigned wrong[][4] = {{0, 255, 255, 255}, {255, 255, 255, 1}, {256, 0, 0, 0}};
  for (const auto& part : wrong) {
    EXPECT_EQ(OutcomeOf([&] { return cKOPAICalMask(part); }), (Outcome{0, 0x1000})) << part[0];
  }
  ExpectEach(BlKOPAIsValidIpMask,
             {"0.0.0.0", "255.0.255.0", "255.255.255.000000000000000000000\nGATEWAY=1"},
             {0, 0x1000});
  ExpectEach(BlKOPAIsValidIpMask, {nullptr}, {0, 0x0D00});
  test::ExpectLog(LOG_ERR, "net_is_ip_mask", "Invaild Argument (NULL != szMask)=[0]\n");
  ExpectEach(ZARNNetNetmaskToPrefix, {"255.255.0.0", "255.0.255.0"}, {16, 0});
  ExpectEach(ZARNNetNetmaskToPrefix, {"255.255.255.256", ""}, {-1, 0x1000});
}

TEST(AddressText, MaskIsRewrittenWhereItStands) {
  const std::pair<std::string, std::string> rows[] = {{"255.255.255.0x0", "255.255.255.0"},
                                                      {"0377.0xFF.255.128", "255.255.255.128"},
                                                      {"0x0.0.0.0", ""},
                                                      {"255.255.255.", ""}};
  for (const auto& [text, rewritten] : rows) {
    const auto buffer = std::make_unique<char[]>(text.size() + 1);  // a longer result would be seen
    std::memcpy(buffer.get(), text.c_str(), text.size() + 1);
    const Outcome wanted = rewritten.empty() ? Outcome{0, 0x1000} : Outcome{1, 0};
    EXPECT_EQ(OutcomeOf([&] { return BlKOPAIsIpMask(buffer.get()); }), wanted) << text;
    EXPECT_EQ(buffer.get(), rewritten.empty() ? text : rewritten);
  }
}

TEST(AddressText, SubnetIsConvertedBothWays) {
  struct {
    int (*convert)(char*, char*);
    const char* in;
    const char* out;
    Outcome outcome;
  } const rows[] = {
      {ErrKOPASubnetToIpMask, "192.168.1.7/24", "192.168.1.0/255.255.255.0", {0, 0}},
      {ErrKOPASubnetToIpMask, "10.1.2.3/32", "10.1.2.3/255.255.255.255", {0, 0}},
      {ErrKOPASubnetToIpMask, "255.255.255.255/0x1", "128.0.0.0/128.0.0.0", {0, 0}},
      {ErrKOPASubnetToIpMask, "192.168.1.7", "", {-1, 0x0D00}},
      {ErrKOPASubnetToIpMask, "192.168.1.7/0", "", {-1, 0x1000}},
      {ErrKOPASubnetToIpMask, "192.168.1.7/33", "", {-1, 0x1000}},
      {ErrKOPASubnetToIpMask, "192.168.1.7/24x", "", {-1, 0x1000}},
      {ErrKOPAIpMaskToSubnet, "192.168.1.7/255.255.255.0", "192.168.1.0/24", {0, 0}},
      {ErrKOPAIpMaskToSubnet, "192.168.1.7", "", {-1, 0x0D00}},
      {ErrKOPAIpMaskToSubnet, "192.168.1.7/0.0.0.0", "", {-1, 0x1000}},
  };
  for (const auto& row : rows) {
    char in[64];
    char out[64] = "";
    std::snprintf(in, sizeof in, "%s", row.in);
    EXPECT_EQ(OutcomeOf([&] { return row.convert(in, out); }), row.outcome) << row.in;
    EXPECT_STREQ(out, row.out);
    EXPECT_STREQ(in, row.in);
    EXPECT_EQ(OutcomeOf([&] { return row.convert(in, nullptr); }), row.outcome) << row.in;
    EXPECT_STREQ(in, row.outcome.result == 0 ? row.out : row.in)
        << "without a buffer the text is the result";
  }
}

TEST(AddressText, NamesHoldOnlyTheirCharacters) {
  ExpectEach(BlKOPAIsHostname, {"a", "_abc", "a_b-", "abcdefghijklmno"}, {1, 0});
  ExpectEach(BlKOPAIsHostname,
             {nullptr, "", "-abc", "1abc", "a.b", "a\n", "abcdefghijklmnop", "na\xc3\xafve"},
             {0, 0});
  for (int c = 1; c < 256; ++c) {
    const char text[] = {'a', static_cast<char>(c), '\0'};
    const bool refused = c <= ' ' || std::strchr("\"(),.:;<>[]\\@", c) != nullptr;
    EXPECT_EQ(BlKOPAIsAtom(text), refused ? 0 : 1) << c;
  }
  const std::string tooLong = std::string(511, 'a') + "\nsearch evil";
  ExpectEach(BlKOPAIsDomain, {"example.com", "localhost", tooLong.c_str()}, {1, 0});
  ExpectEach(BlKOPAIsDomain,
             {"", ".a", "a.", "example..com", "exa mple.com", tooLong.substr(1).c_str()}, {0, 0});
}

TEST(AddressText, V6MayCarryAPrefixLength) {
  ExpectEach(BlKOPAIsv6IpAddrValid,
             {"::", "::ffff:192.168.1.1", "2001:db8::/32", "::1/0", "::1/128", "::1/007"}, {1, 0});
  const std::string tooLong = std::string(5000, '0') + "::1/64";
  ExpectEach(BlKOPAIsv6IpAddrValid,
             {"", "192.168.1.1", "::1/", "::1/129", "::1/0064", "::1/-1", "::1/6 ", "::1/64/64",
              "/64", tooLong.c_str()},
             {0, 0});
}

TEST(AddressText, SubnetsAreComparedWithinOneFamily) {
  struct {
    const char* fault;
    Texts texts;  // two addresses and the mask
    Outcome outcome;
  } const rows[] = {
      {"host bits compared", {"192.168.1.1", "192.168.1.254", "255.255.255.0"}, {1, 0}},
      {"network bits left out", {"192.168.1.1", "192.168.2.1", "255.255.255.0"}, {0, 0}},
      {"IPv6 cut to 32 bits",
       {"2001:db8::1", "2001:db8:0:0:1::1", "ffff:ffff:ffff:ffff:ffff::"},
       {0, 0}},
      {"IPv6 host bits compared",
       {"2001:db8::1", "2001:db8::ffff:1", "ffff:ffff:ffff:ffff::"},
       {1, 0}},
      {"families mixed", {"1.2.3.4", "::1", "0.0.0.0"}, {0, 0}},
      {"mask of the other family", {"1.2.3.4", "1.2.3.4", "::"}, {0, 0}},
      {"null", {"1.2.3.4", "1.2.3.4", nullptr}, {0, 0x0D00}},
  };
  for (const auto& [fault, texts, outcome] : rows) {
    EXPECT_EQ(OutcomeOf([&, &t = texts] { return ZARNNetIsSameSubnet(t[0], t[1], t[2]); }), outcome)
        << fault;
  }
}

TEST(AddressText, RangeHoldsItsBoundsInEitherOrder) {
  struct {
    Texts texts;  // the address and the bounds
    int family;
    int within;
  } const rows[] = {{{"10.0.0.5", "10.0.0.1", "10.0.1.0"}, AF_INET, 1},
                    {{"200.0.0.1", "10.0.0.1", "220.0.0.1"}, AF_INET, 1},
                    {{"10.0.0.1", "10.0.0.1", "10.0.0.9"}, AF_INET, 1},
                    {{"::81", "::7f", "::81"}, AF_INET6, 1},
                    {{"::1:1", "::1", "::1:0"}, AF_INET6, 0},
                    {{"::1", "::1", "10.0.0.9"}, AF_INET6, -1},
                    {{nullptr, "10.0.0.1", "10.0.0.9"}, AF_INET, -1}};
  for (const auto& [texts, family, within] : rows) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(KOPAIsIpInRange(texts[0], texts[1], texts[2], family), within) << texts[1];
    const int badText = texts[0] == nullptr ? 0x0D00 : 0x1000;
    EXPECT_EQ(within < 0 ? badText : 0, KOPACErrGet()) << texts[1];
    EXPECT_EQ(KOPAIsIpInRange(texts[0], texts[2], texts[1], family), within) << texts[1];
  }
  test::Refused(0x0D00, [] { return KOPAIsIpInRange("10.0.0.1", "::", "::1", AF_UNIX); });
  test::ExpectLog(LOG_ERR, "net_is_same_subnet", "Unknown address family, 1.");
  ExpectEach(ZARNNetGetAddrType, {"010.0.0.1", "", nullptr}, {0, 0});
  ExpectEach(ZARNNetGetAddrType, {"::ffff:10.0.0.1"}, {AF_INET6, 0});
  EXPECT_STREQ(ZARNNetNtoa(0xC0A80107), "192.168.1.7");
}

}  // namespace
