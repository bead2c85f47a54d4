// SPDX-License-Identifier: Apache-2.0
// Addresses, and which texts are one.
#include "frame/base/address.h"

#include <algorithm>
#include <arpa/inet.h>
#include <bit>
#include <charconv>
#include <iterator>
#include <limits>

#include "frame/base/error.h"
#include "frame/base/text.h"

namespace frame {
namespace {

// The functions in whose names failures are known.
constexpr char kAddressSource[] = "net_is_ip_addr";
constexpr char kMaskSource[] = "net_is_ip_mask";
constexpr char kSubnetSource[] = "net_subnet_to_ip_mask";

constexpr unsigned kLastPart = 255;

// The value of a digit of base 16; 16 for any other character.
constexpr unsigned DigitOf(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return 16;
}

// Takes the digits of a base off the front of the text. Too large a number is cut off rather than
// wrapped: 4294967297 must not pass for 1.
inline unsigned TakeDigits(std::string_view* text, unsigned base) {
  constexpr std::uint64_t kMost = std::numeric_limits<unsigned>::max();
  std::uint64_t number = 0;
  std::size_t taken = 0;
  for (; taken < text->size(); ++taken) {
    const unsigned digit = DigitOf((*text)[taken]);
    if (digit >= base) break;
    number = number * base + digit;
    if (number > kMost) [[unlikely]]
      number = kMost;
  }
  text->remove_prefix(taken);
  return static_cast<unsigned>(number);
}

// Else it begins with no number: a blank, a sign or a newline is never part of an address.
constexpr bool BeginsWithDigit(std::string_view text) {
  return !text.empty() && DigitOf(text.front()) <= 9;
}

// Takes the number off the front of the text: decimal, octal after a leading 0, hexadecimal after
// 0x. Inline, because the text then stays in registers from part to part: half of a check's time.
[[gnu::always_inline]] inline unsigned TakeNumber(std::string_view* text) {
  if (text->front() != '0') return TakeDigits(text, 10);
  const bool isHex = text->size() > 2 && ((*text)[1] | 0x20) == 'x' && DigitOf((*text)[2]) < 16;
  if (!isHex) return TakeDigits(text, 8);
  text->remove_prefix(2);
  return TakeDigits(text, 16);
}

// As SplitDotted(), without its code.
inline int TakeParts(std::string_view text, DottedParts* parts) {
  text = text.substr(0, kDottedJudged);
  const int last = static_cast<int>(parts->size()) - 1;
  for (int i = 0;; ++i) {
    if (!BeginsWithDigit(text)) return i;
    const unsigned number = TakeNumber(&text);
    if (i == last && !text.empty()) return i;  // text follows the address
    (*parts)[static_cast<std::size_t>(i)] = number;
    if (i == last || !text.starts_with('.')) return i + 1;
    text.remove_prefix(1);
  }
}

constexpr Ipv4 Join(const DottedParts& parts) {
  return Ipv4(parts[0] << 24 | parts[1] << 16 | parts[2] << 8 | parts[3]);
}

bool FitBytes(DottedParts::const_iterator first, DottedParts::const_iterator last) {
  return std::all_of(first, last, [](unsigned part) { return part <= kLastPart; });
}

// ---- subnets

constexpr std::size_t kSubnetJudged = 63;

// What stands before the "/" as an address, and what stands behind it.
struct Halves {
  Ipv4 address;
  std::string_view size;
};

std::optional<Halves> SplitAtSlash(std::string_view text) {
  constexpr Place kAt(kSubnetSource);
  text = text.substr(0, kSubnetJudged);
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt, kAt);
  DottedParts parts{};
  if (SplitDotted(text.substr(0, slash), &parts) != 4) return std::nullopt;
  if (!FitBytes(parts.begin(), parts.end()))
    return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, kAt);
  return Halves{Join(parts), text.substr(slash + 1)};
}

bool Present(int family, std::string_view text, void* address) {
  char whole[INET6_ADDRSTRLEN + 1] = "";  // what does not fit is no address
  if (text.size() >= sizeof whole) return false;
  CopyText(text, whole);
  return ::inet_pton(family, whole, address) == 1;
}

}  // namespace

// ---- IPv4

std::string DottedText(Ipv4 address) {
  char text[INET_ADDRSTRLEN];
  char* end = text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    end = std::to_chars(end, end + 3, address.value >> shift & kLastPart).ptr;  // three digits
    *end++ = '.';
  }
  return {text, end - 1};
}

std::optional<Ipv4> ParseIpv4(std::string_view text) {
  in_addr address{};
  if (!Present(AF_INET, text, &address)) return std::nullopt;
  return address;
}

int SplitDotted(std::string_view text, DottedParts* parts) {
  const int count = TakeParts(text, parts);
  return count == 4 ? count : Fail(ZARNNETERR_MALFORMED_ADDRESS, count, Place(kAddressSource));
}

bool IsHostAddress(std::string_view text) {
  constexpr unsigned kLoopback = 127;
  constexpr unsigned kLastUnicast = 223;
  DottedParts parts{};
  const bool isOne = TakeParts(text, &parts) == 4 && parts[0] != kLoopback &&
                     parts[0] <= kLastUnicast && FitBytes(parts.begin(), parts.end());
  return isOne || Fail(ZARNNETERR_MALFORMED_ADDRESS, false, Place(kAddressSource));
}

bool IsPrivate(const DottedParts& parts) {
  switch (parts[0]) {
    case 10:
    case 127:
      return true;
    case 169:
      return parts[1] == 254;
    case 172:
      return parts[1] >= 16 && parts[1] <= 31;
    case 192:
      return parts[1] == 168;
    default:
      return false;
  }
}

// ---- netmasks

std::optional<unsigned> PrefixOf(const DottedParts& mask) {
  constexpr Place kAt(kMaskSource);
  if (!FitBytes(mask.begin(), mask.end()))
    return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, kAt);
  const std::uint32_t value = Join(mask).value;
  const int prefix = std::countl_one(value);
  if (std::popcount(value) != prefix) return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, kAt);
  return static_cast<unsigned>(prefix);
}

std::optional<Ipv4> ParseMask(std::string_view text) {
  DottedParts parts{};
  // The splitter would judge the beginning only, and callers store the whole text.
  if (text.size() > kDottedJudged)
    return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, Place(kMaskSource));
  if (SplitDotted(text, &parts) != 4) return std::nullopt;
  const auto prefix = PrefixOf(parts);
  if (!prefix) return std::nullopt;
  if (*prefix == 0) return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, Place(kMaskSource));
  return MaskOf(*prefix);
}

std::optional<unsigned> OneBitsOf(const std::string& mask) {
  in_addr address{};
  if (::inet_aton(mask.c_str(), &address) == 0)
    return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, Place(kMaskSource));
  return static_cast<unsigned>(std::popcount(address.s_addr));
}

// ---- subnets

std::optional<Subnet> ParseSubnet(std::string_view text) {
  const auto halves = SplitAtSlash(text);
  if (!halves) return std::nullopt;
  std::string_view size = halves->size;
  const unsigned prefix = BeginsWithDigit(size) ? TakeNumber(&size) : 0;
  if (!size.empty() || prefix < 1 || prefix > 32)
    return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, Place(kSubnetSource));
  return Subnet{halves->address & MaskOf(prefix), prefix};
}

std::optional<Subnet> ParseSubnetWithMask(std::string_view text) {
  const auto halves = SplitAtSlash(text);
  if (!halves) return std::nullopt;
  DottedParts mask{};
  if (SplitDotted(halves->size, &mask) != 4) return std::nullopt;
  const auto prefix = PrefixOf(mask);
  if (!prefix) return std::nullopt;
  if (*prefix == 0) return Fail(ZARNNETERR_MALFORMED_ADDRESS, std::nullopt, Place(kSubnetSource));
  return Subnet{halves->address & MaskOf(*prefix), *prefix};
}

// ---- IPv6

std::optional<Ipv6> ParseIpv6(std::string_view text) {
  Ipv6 address{};
  if (!Present(AF_INET6, text, address.data())) return std::nullopt;
  return address;
}

std::string Ipv6Text(const Ipv6& address) {
  char text[INET6_ADDRSTRLEN] = "";
  ::inet_ntop(AF_INET6, address.data(), text, sizeof text);
  return text;
}

std::optional<Ipv6> ParseHexIpv6(std::string_view digits) {
  Ipv6 address{};
  if (digits.size() != 2 * address.size()) return std::nullopt;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const char* const byte = digits.data() + 2 * i;
    if (std::from_chars(byte, byte + 2, address[i], 16).ptr != byte + 2) return std::nullopt;
  }
  return address;
}

bool IsIpv6WithPrefix(std::string_view text) {
  constexpr long kLongestPrefix = 128;
  const std::size_t slash = text.find('/');
  if (!ParseIpv6(text.substr(0, slash))) return false;
  if (slash == std::string_view::npos) return true;
  const std::string_view prefix = text.substr(slash + 1);
  const bool isDigits =
      std::all_of(prefix.begin(), prefix.end(), [](char c) { return c >= '0' && c <= '9'; });
  return isDigits && !prefix.empty() && prefix.size() <= 3 && *ToNumber(prefix) <= kLongestPrefix;
}

// ---- either family

std::optional<Address> ParseAddress(int family, std::string_view text) {
  Address address{family, {}};
  if (!Present(family, text, address.bytes.data())) return std::nullopt;
  return address;
}

std::optional<Address> ParseAddress(std::string_view text) {
  const auto address = ParseAddress(AF_INET, text);
  return address ? address : ParseAddress(AF_INET6, text);
}

bool IsUnfitAddress(const char* text) {
  if (IsEmpty(text) || *text == '-') return true;
  constexpr std::string_view kSigns = ".:/%_-";
  const std::string_view all(text);
  return !std::all_of(all.begin(), all.end(), [&](char c) {
    const char lower = static_cast<char>(c | 0x20);
    return (c >= '0' && c <= '9') || (lower >= 'a' && lower <= 'z') ||
           kSigns.find(c) != std::string_view::npos;
  });
}

}  // namespace frame
