// SPDX-License-Identifier: Apache-2.0
// Addresses, and which texts are one. Where a judgement fails it sets the code that the exported
// function of the same judgement sets, in that function's name.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>

namespace frame {

// ---- IPv4

// An address or a netmask, its first part in the top byte. The kernel's form of it turns into one
// by itself.
struct Ipv4 {
  std::uint32_t value = 0;

  constexpr Ipv4() = default;
  constexpr explicit Ipv4(std::uint32_t number) : value(number) {}
  // NOLINTNEXTLINE(google-explicit-constructor): both are the same address
  Ipv4(in_addr address) : value(ntohl(address.s_addr)) {}

  [[nodiscard]] in_addr ForKernel() const { return {htonl(value)}; }
  friend constexpr auto operator<=>(Ipv4, Ipv4) = default;
};

constexpr Ipv4 operator&(Ipv4 a, Ipv4 b) {
  return Ipv4(a.value & b.value);
}

std::string DottedText(Ipv4 address);

// Four decimal parts without leading zeros, each at most 255; sets no code. So the programs of the
// system and the files of servers want it.
std::optional<Ipv4> ParseIpv4(std::string_view text);

// Splits dotted text into its numbers, written as C writes them: 0x1F is hexadecimal, a leading 0
// octal. The first 31 characters are judged; what does not begin with a digit is no part.
// Answers how many parts were read, 4 for a whole address, and sets 0x1000 for fewer; the range of
// the parts is the caller's to judge.
using DottedParts = std::array<unsigned, 4>;
inline constexpr std::size_t kDottedJudged = 31;
int SplitDotted(std::string_view text, DottedParts* parts);

// Is this the address of a host: no loopback, multicast or reserved one? No sets 0x1000.
bool IsHostAddress(std::string_view text);

// 10.0.0.0/8, 172.16.0.0/12, 192.168.0.0/16, loopback and link-local ones.
bool IsPrivate(const DottedParts& parts);

// ---- netmasks

// The length of the prefix, 0 for 0.0.0.0; nothing, with 0x1000, where a part exceeds 255 or the
// one-bits are not contiguous.
std::optional<unsigned> PrefixOf(const DottedParts& mask);

// A contiguous netmask of at least one bit; nothing, with 0x1000, for other texts.
std::optional<Ipv4> ParseMask(std::string_view text);

// The netmask of a prefix of 0 to 32 bits.
constexpr Ipv4 MaskOf(unsigned prefix) {
  return Ipv4(prefix == 0 ? 0 : ~std::uint32_t{0} << (32 - prefix));
}

// The number of one-bits, contiguous or not, of a netmask as the C library reads addresses
// ("255.255"); nothing, with 0x1000, for other texts.
std::optional<unsigned> OneBitsOf(const std::string& mask);

// ---- subnets

struct Subnet {
  Ipv4 network;
  unsigned prefix;

  [[nodiscard]] Ipv4 Mask() const { return MaskOf(prefix); }
};

// "a.b.c.d/N", N from 1 to 32, or "a.b.c.d/m.m.m.m", of which the first 63 characters are judged.
// Nothing, with 0x0D00 (no "/") or 0x1000, for other texts.
std::optional<Subnet> ParseSubnet(std::string_view text);
std::optional<Subnet> ParseSubnetWithMask(std::string_view text);

// ---- IPv6

using Ipv6 = std::array<unsigned char, 16>;

std::optional<Ipv6> ParseIpv6(std::string_view text);  // sets no code
std::string Ipv6Text(const Ipv6& address);             // compressed, as the kernel's tools print it

// 32 hexadecimal digits, as the kernel's tables have them.
std::optional<Ipv6> ParseHexIpv6(std::string_view digits);

// An address with or without "/" and a prefix length of 0 to 128; sets no code.
bool IsIpv6WithPrefix(std::string_view text);

// ---- either family

// In network order; an IPv4 address is followed by zeros.
struct Address {
  int family;  // AF_INET, AF_INET6
  Ipv6 bytes;
};

std::optional<Address> ParseAddress(std::string_view text);
std::optional<Address> ParseAddress(int family, std::string_view text);

// Text that cannot be meant as an address or a netmask: null, empty, an option of a program ("-"
// first), or with other characters than letters, digits and ".:/%_-". It goes into no file and to
// no program.
bool IsUnfitAddress(const char* text);

}  // namespace frame
