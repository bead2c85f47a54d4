// SPDX-License-Identifier: Apache-2.0
// The further options of an IPv4 subnet, read from its fragment.
#include <cstdlib>
#include <memory>
#include <utility>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/options.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/file.h"

using namespace frame;
using namespace dhcpd;

namespace {

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
  if (!fields[1].starts_with(kPrefix)) return WrongFormat(line.c_str());
  const auto words = SplitWords(fields[1].substr(kPrefix.size()));
  if (words.empty()) return WrongFormat(line.c_str());
  const std::string name(words.front());
  const Option* const known = FindOption(name);
  if (known == nullptr) {
    LOG_DETAIL("%s:%d Unsupported dhcp option name [%s]", name.c_str());
    return Outcome::kPassedOver;
  }
  OwnedOption option = NewOption(*known);
  if (option == nullptr) return Outcome::kNoMemory;
  const Outcome outcome = TakesList(*known) ? ReadValues(fields, line.c_str(), option.get())
                                            : ReadValue(fields, line.c_str(), option.get());
  if (outcome != Outcome::kRead) return outcome;
  if (!IsAcceptable(*option)) return WrongFormat(line.c_str());
  *read = std::move(option);
  return Outcome::kRead;
}

// False when there was no memory for an option.
bool ReadAll(BoundedLines* lines, OwnedOption* chain) {
  DHCP_OPTION* last = nullptr;
  while (const auto line = lines->Next()) {
    OwnedOption option;
    const Outcome outcome = ReadLine(*line, &option);
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

bool dhcpd::ReadOptions(const char* subnetName, const std::string& path, DHCP_OPTION** chain) try {
  *chain = nullptr;
  if (IsEmpty(subnetName)) {
    LOG_ERROR("%s:%d Wrong input parameter when get user-defined dhcp option");
    return false;
  }
  if (!Exists(path)) return true;
  constexpr std::size_t kLineSize = 1024;
  BoundedLines lines(path, kLineSize);
  if (!lines.IsOpen()) {
    LOG_ERROR("%s:%d Failed to open DHCP config [%s] for reading", path.c_str());
    return false;
  }
  OwnedOption options;
  if (!ReadAll(&lines, &options)) return false;
  *chain = options.release();
  return true;
} catch (...) {
  LOG_ERROR("%s:%d Failed to alloc list when get user-defined dhcp option");
  return Fail(ZARNNETERR_NO_MEMORY, false);
}

void DHCPOptionFree(DHCP_OPTION* head) {
  Boundary([&] {
    while (head != nullptr) {
      KOPACSzListFree(head->values);
      std::free(std::exchange(head, head->next));
    }
  });
}
