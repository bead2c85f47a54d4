// Subnets written with a prefix length and with a netmask, one turned into the other.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include <zarnnetsdk/addr.h>

#include "addr/dotted.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

constexpr std::size_t kSubnetSize = 64;  // of the texts of both sides, terminator included

struct Halves {
  std::string address;
  std::string size;  // prefix length or netmask
};

std::optional<Halves> SplitAtSlash(const char* szIn) {
  if (szIn == nullptr) return std::nullopt;
  const std::string_view text = std::string_view(szIn).substr(0, kSubnetSize - 1);
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  return Halves{std::string(text.substr(0, slash)), std::string(text.substr(slash + 1))};
}

// Nothing, with 0x1000, when the text is no address.
std::optional<std::uint32_t> ReadAddress(const std::string& text) {
  unsigned part[4];
  if (cKOPAISepIP(text.c_str(), part) != 4) return std::nullopt;
  if (std::any_of(part, part + 4, [](unsigned number) { return number > 255; })) {
    SetError(ZARNNETERR_MALFORMED_ADDRESS);
    return std::nullopt;
  }
  return addr::ToValue(part);
}

// A prefix length of 1 to 32 as a netmask; nothing, with 0x1000, for any other text.
std::optional<std::uint32_t> ReadPrefix(const std::string& text) {
  const char* rest = text.c_str();
  const auto prefix = addr::TakeNumber(&rest);
  if (!prefix || *rest != '\0' || *prefix < 1 || *prefix > 32) {
    SetError(ZARNNETERR_MALFORMED_ADDRESS);
    return std::nullopt;
  }
  return ~std::uint32_t{0} << (32 - *prefix);
}

void Answer(const std::string& subnet, char* szIn, char* szOut) {
  CopyText(subnet, szOut != nullptr ? szOut : szIn, kSubnetSize);
}

}  // namespace

int ErrKOPASubnetToIpMask(char* szIn, char* szOut) {
  return Boundary(-1, [&]() -> int {
    const auto halves = SplitAtSlash(szIn);
    if (!halves) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto address = ReadAddress(halves->address);
    if (!address) return -1;
    const auto mask = ReadPrefix(halves->size);
    if (!mask) return -1;
    Answer(addr::DottedText(*address & *mask) + '/' + addr::DottedText(*mask), szIn, szOut);
    return 0;
  });
}

int ErrKOPAIpMaskToSubnet(char* szIn, char* szOut) {
  return Boundary(-1, [&]() -> int {
    const auto halves = SplitAtSlash(szIn);
    if (!halves) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto address = ReadAddress(halves->address);
    if (!address) return -1;
    unsigned part[4];
    if (cKOPAISepIP(halves->size.c_str(), part) != 4) return -1;
    const int prefix = cKOPAICalMask(part);
    if (prefix == 0) return Fail(ZARNNETERR_MALFORMED_ADDRESS, -1);
    Answer(addr::DottedText(*address & addr::ToValue(part)) + '/' + std::to_string(prefix), szIn,
           szOut);
    return 0;
  });
}
