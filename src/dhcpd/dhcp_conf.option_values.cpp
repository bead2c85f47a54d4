// SPDX-License-Identifier: Apache-2.0
// The further options of an IPv4 subnet: which there are, and which values they take.
#include <charconv>
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/options.h"
#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;
using namespace dhcpd;

namespace {

template <class Predicate>
const Option* Find(Predicate matches) {
  for (const Option& option : ZARNNetDhcpOptions) {
    if (matches(option)) return &option;
  }
  return nullptr;
}

const Option* FindNumber(int number) {
  return Find([number](const Option& option) { return option.number == number; });
}

// ---- values

bool IsWithin(std::string_view text, long least, long most) {
  const auto number = ToNumber(text);
  return number && least <= *number && *number <= most;
}

bool IsUnsigned(std::string_view text) {
  unsigned long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

// Addresses and masks are plainly dotted as well: octal and hexadecimal parts would keep the server
// from starting.
bool IsAddress(std::string_view text) {
  return IsHostAddress(text) && ParseIpv4(text);
}

bool IsNodeType(std::string_view text) {
  const auto number = ToNumber(text);
  return number == 1 || number == 2 || number == 4 || number == 8;
}

bool IsValue(const Option& option, std::string_view text) {
  switch (option.takes) {
    case ZARNNET_DHCP_INTEGER:
      return IsWithin(text, option.least, option.most);
    case ZARNNET_DHCP_UNSIGNED:
      return IsUnsigned(text);
    case ZARNNET_DHCP_NODE_TYPE:
      return IsNodeType(text);
    case ZARNNET_DHCP_ADDRESS:
      return IsAddress(text);
    default:
      return !text.empty();
  }
}

// ---- values of lists

bool IsListedAddress(int index, const char* value) {
  if (IsAddress(value)) return true;
  LOG_ERROR("%s:%d wrong list %d-th value [%s], not IP", index, value);
  return false;
}

bool IsListedMask(int index, const char* value) {
  if (ParseMask(value) && ParseIpv4(value)) return true;
  LOG_ERROR("%s:%d wrong list %d-th value [%s], not mask", index, value);
  return false;
}

// An address with a prefix length; whether its host bits are zero is the client's affair.
bool IsListedDestination(int index, const char* value) {
  constexpr long kLongestPrefix = 32;
  const auto parts = SplitFields(value, "/");
  if (parts.size() != 2) {
    LOG_ERROR("%s:%d wrong list %d-th value [%s]", index, value);
    return false;
  }
  if (!IsAddress(parts[0])) {
    LOG_ERROR("%s:%d wrong list %d-th value [%s], wrong IP", index, value);
    return false;
  }
  if (!IsWithin(parts[1], 0, kLongestPrefix)) {
    LOG_ERROR("%s:%d wrong list %d-th value [%s], wrong netmask number", index, value);
    return false;
  }
  return true;
}

bool IsListedGateway(int index, const char* value) {
  if (IsAddress(value)) return true;
  LOG_ERROR("%s:%d wrong list %d-th value [%s], wrong IP", index, value);
  return false;
}

using Check = bool (*)(int index, const char* value);

// The elements are judged in turn by two checks.
bool IsAlternating(const KOPACSZLIST& values, Check even, Check odd) {
  for (int i = 0; i < values.nItem; ++i) {
    if (!(i % 2 == 0 ? even : odd)(i, KOPACSzListGet(&values, i))) return false;
  }
  return true;
}

bool IsListFor(const Option& option, const KOPACSZLIST* values) {
  if (values == nullptr || values->nItem == 0) {
    LOG_ERROR("%s:%d option list value is empty");
    return false;
  }
  switch (option.takes) {
    case ZARNNET_DHCP_PAIRS:
      return IsAlternating(*values, IsListedAddress, IsListedMask);
    case ZARNNET_DHCP_ROUTES:
      return IsAlternating(*values, IsListedDestination, IsListedGateway);
    default:
      return IsAlternating(*values, IsListedAddress, IsListedAddress);
  }
}

}  // namespace

const Option* dhcpd::FindOption(std::string_view name) {
  return Find([name](const Option& option) { return name == option.name; });
}

bool dhcpd::TakesList(const Option& option) {
  switch (option.takes) {
    case ZARNNET_DHCP_ADDRESSES:
    case ZARNNET_DHCP_PAIRS:
    case ZARNNET_DHCP_ROUTES:
      return true;
    default:
      return false;
  }
}

bool dhcpd::IsAcceptable(const DHCP_OPTION& option) {
  constexpr int kLastNumber = 254;
  if (option.number < 1 || option.number > kLastNumber) {
    LOG_ERROR("%s:%d wrong DHCP option number [%d]", option.number);
    return false;
  }
  const std::string name(FieldText(option.name));
  const Option* const known = FindNumber(option.number);
  if (known == nullptr || name != known->name) {
    LOG_ERROR("%s:%d wrong DHCP option number [%d]: wrong name [%s]", option.number, name.c_str());
    return false;
  }
  if (TakesList(*known)) {
    if (IsListFor(*known, option.values)) return true;
    LOG_ERROR("%s:%d wrong DHCP option number [%d]: wrong list value", option.number);
    return false;
  }
  const std::string value(FieldText(option.value));
  if (IsValue(*known, value)) return true;
  LOG_ERROR("%s:%d wrong DHCP option number [%d]: wrong string value [%s]", option.number,
            value.c_str());
  return false;
}

std::string dhcpd::ValueText(const DHCP_OPTION& option) {
  constexpr std::size_t kLongest = sizeof option.value - 1;
  const Option* const known = FindNumber(option.number);
  if (known == nullptr || !TakesList(*known)) return std::string(FieldText(option.value));
  std::string text;
  for (int i = 0; i < option.values->nItem; ++i)
    text.append(i == 0 ? "" : ",").append(KOPACSzListGet(option.values, i));
  text.resize(std::min(text.size(), kLongest));
  if (text.ends_with(',')) text.pop_back();
  return text;
}

int DHCPOptionIsListValue(int number) {
  return Boundary(0, [&]() -> int {
    const Option* const option = FindNumber(number);
    return option != nullptr && TakesList(*option) ? 1 : 0;
  });
}
