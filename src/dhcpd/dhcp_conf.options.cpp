// The further options of an IPv4 subnet: which values are acceptable, how they are read.
#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/dhcp_options.h>

#include "dhcpd/files.h"
#include "dhcpd/options.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/file.h"

using namespace frame;
using namespace dhcpd;

namespace {

// ---- which options there are

using Option = ZARNNET_DHCP_OPTION;

bool IsList(const Option& option) {
  switch (option.takes) {
    case ZARNNET_DHCP_ADDRESSES:
    case ZARNNET_DHCP_PAIRS:
    case ZARNNET_DHCP_ROUTES:
      return true;
    default:
      return false;
  }
}

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

const Option* FindName(std::string_view name) {
  return Find([name](const Option& option) { return name == option.name; });
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

// Plainly dotted as well: octal and hexadecimal parts would keep the server from starting.
bool IsAddress(std::string_view text) {
  const std::string address(text);
  in_addr parsed{};
  return BlKOPAIsIpAddr(address.c_str()) == 1 &&
         ::inet_pton(AF_INET, address.c_str(), &parsed) == 1;
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
  if (BlKOPAIsValidIpMask(value) == 1) return true;
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
  if (values == nullptr) {
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

// ---- reading

struct FreeOption {
  void operator()(DHCP_OPTION* head) const { DHCPOptionFree(head); }
};
using OwnedOption = std::unique_ptr<DHCP_OPTION, FreeOption>;

enum class Outcome { kRead, kPassedOver, kNoMemory };

Outcome WrongFormat(const char* line) {
  LOG_WARN("%s:%d Wrong user-defined dhcp option format [%s]", line);
  return Outcome::kPassedOver;
}

OwnedOption NewOption(const Option& known) {
  OwnedOption option(static_cast<DHCP_OPTION*>(std::calloc(1, sizeof(DHCP_OPTION))));
  if (option == nullptr) {
    LOG_ERROR("%s:%d malloc failed");
    return nullptr;
  }
  option->number = known.number;
  CopyText(known.name, option->name);
  return option;
}

// All fields behind the option's name. An empty one makes the whole wrong.
Outcome ReadValues(const std::vector<std::string_view>& fields, const char* line,
                   DHCP_OPTION* option) {
  option->values = KOPACSzListAlloc(static_cast<int>(fields.size()));
  if (option->values == nullptr) {
    LOG_ERROR("%s:%d KOPACSzListAlloc() Failed");
    return Outcome::kNoMemory;
  }
  for (std::size_t i = 2; i < fields.size(); ++i) {
    if (fields[i].empty()) return WrongFormat(line);
    if (KOPACSzListPush(&option->values, std::string(fields[i]).c_str()) < 0) {
      LOG_ERROR("%s:%d KOPACSzListPush() Failed");
      return Outcome::kNoMemory;
    }
  }
  return Outcome::kRead;
}

Outcome ReadValue(const std::vector<std::string_view>& fields, const char* line,
                  DHCP_OPTION* option) {
  if (fields[2].empty()) return WrongFormat(line);
  CopyText(fields[2], option->value);
  return Outcome::kRead;
}

// One line of a fragment. The subnet's own lines, of options that the table does not have, are
// passed over quietly.
Outcome ReadLine(const std::string& line, OwnedOption* read) {
  constexpr std::string_view kPrefix = "option:";
  if (line.find("dhcp-option=tag:") == std::string::npos) return Outcome::kPassedOver;
  const auto fields = SplitFields(line, ",");
  if (fields.size() < 3) return WrongFormat(line.c_str());
  if (fields[1].empty()) {
    LOG_WARN("%s:%d List get failed or wrong user-defined dhcp option format [%s]", line.c_str());
    return Outcome::kPassedOver;
  }
  const auto words = SplitWords(fields[1]);
  if (!fields[1].starts_with(kPrefix) || words.front().size() == kPrefix.size()) {
    return WrongFormat(line.c_str());
  }
  const std::string name(words.front().substr(kPrefix.size()));
  const Option* const known = FindName(name);
  if (known == nullptr) {
    LOG_DETAIL("%s:%d Unsupported dhcp option name [%s]", name.c_str());
    return Outcome::kPassedOver;
  }
  OwnedOption option = NewOption(*known);
  if (option == nullptr) return Outcome::kNoMemory;
  const Outcome outcome = IsList(*known) ? ReadValues(fields, line.c_str(), option.get())
                                         : ReadValue(fields, line.c_str(), option.get());
  if (outcome != Outcome::kRead) return outcome;
  if (!IsAcceptable(*option)) return WrongFormat(line.c_str());
  *read = std::move(option);
  return Outcome::kRead;
}

bool ReadAll(std::FILE* file, OwnedOption* chain) {
  char line[1024];
  DHCP_OPTION* last = nullptr;
  while (std::fgets(line, sizeof line, file) != nullptr) {
    line[std::strcspn(line, "\n")] = '\0';
    OwnedOption option;
    const Outcome outcome = ReadLine(line, &option);
    if (outcome == Outcome::kNoMemory) return Fail(ZARNNETERR_NO_MEMORY, false);
    if (outcome == Outcome::kPassedOver) continue;
    DHCP_OPTION* const added = option.release();
    if (last == nullptr) {
      chain->reset(added);
    } else {
      last->next = added;
    }
    last = added;
  }
  return true;
}

}  // namespace

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
  if (IsList(*known)) {
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
  const std::string_view value = FieldText(option.value);
  if (!value.empty() || option.values == nullptr) return std::string(value);
  std::string text;
  for (int i = 0; i < option.values->nItem; ++i)
    text.append(i == 0 ? "" : ",").append(KOPACSzListGet(option.values, i));
  text.resize(std::min(text.size(), kLongest));
  if (text.ends_with(',')) text.pop_back();
  return text;
}

bool dhcpd::ReadOptions(const char* subnetName, const std::string& path, DHCP_OPTION** chain) try {
  *chain = nullptr;
  if (IsEmpty(subnetName)) {
    LOG_ERROR("%s:%d Wrong input parameter when get user-defined dhcp option");
    return false;
  }
  if (!Exists(path)) return true;
  const File file = OpenFile(path, "r");
  if (!file) {
    LOG_ERROR("%s:%d Failed to open DHCP config [%s] for reading", path.c_str());
    return false;
  }
  OwnedOption options;
  if (!ReadAll(file.get(), &options)) return false;
  *chain = options.release();
  return true;
} catch (...) {
  LOG_ERROR("%s:%d Failed to alloc list when get user-defined dhcp option");
  return Fail(ZARNNETERR_NO_MEMORY, false);
}

int DHCPOptionIsListValue(int number) {
  return Boundary(0, [&]() -> int {
    const Option* const option = FindNumber(number);
    return option != nullptr && IsList(*option) ? 1 : 0;
  });
}

void DHCPOptionFree(DHCP_OPTION* head) {
  Boundary([&] {
    while (head != nullptr) {
      KOPACSzListFree(head->values);
      std::free(std::exchange(head, head->next));
    }
  });
}
