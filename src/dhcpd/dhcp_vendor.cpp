// SPDX-License-Identifier: Apache-2.0
// Options that go to the clients of one vendor class alone, one line of the vendor fragment each:
// class, number and value, which may hold commas itself.
#include <optional>
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/log.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/line_file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

constexpr char kPrefix[] = "dhcp-option=vendor:";
constexpr int kLastNumber = 254;
constexpr std::size_t kLineSize = 1024;

bool IsOptionNumber(long number) {
  return number >= 1 && number <= kLastNumber;
}

bool IsOptionNumber(std::string_view text) {
  const auto number = ToNumber(text);
  return number && IsOptionNumber(*number);
}

const char* OrNothing(const char* text) {
  return text == nullptr ? "" : text;
}

struct VendorOption {
  std::string vendor;
  std::string number;
  std::string value;
};

std::optional<VendorOption> Parse(std::string_view line) {
  const std::string text(line);
  const auto fields = SplitFields(line, ",");
  if (!line.starts_with(kPrefix) || fields.size() < 2) {
    LOG_ERROR("%s:%d vendor opt line [%s] has wrong format", text.c_str());
    return std::nullopt;
  }
  VendorOption option{
      std::string(fields[0].substr(sizeof kPrefix - 1)), std::string(fields[1]), {}};
  if (!IsOptionNumber(option.number)) {
    LOG_ERROR("%s:%d Wrong option number [%s]", option.number.c_str());
    return std::nullopt;
  }
  const std::size_t valueAt = fields[0].size() + fields[1].size() + 2;
  if (valueAt < line.size()) option.value = line.substr(valueAt);
  return option;
}

// Hands the lines with the text in them, without their newlines, to a step until it answers false.
// False as well when the file cannot be read; without a file there are no lines.
template <class Step>
bool ForLinesWith(const std::string& text, Step step) {
  if (!Exists(kVendorConf)) return true;
  BoundedLines lines(kVendorConf, kLineSize);
  while (const auto line = lines.Next()) {
    if (line->find(text) != std::string::npos && !step(*line)) return false;
  }
  if (!lines.Failed()) return true;
  LOG_ERROR("%s:%d Failed to read DHCP vendor config");
  return false;
}

// Removes the lines that begin with this text and end there or go on with a comma.
bool RemoveLines(const std::string& beginning) {
  return !Exists(kVendorConf) || DropKey(kVendorConf, beginning.c_str());
}

bool AddOptionLine(const char* vendor, const char* number, const char* value) {
  const std::string line = Format("%s%s,%s,%s", kPrefix, vendor, number, value);
  return AddLine(kVendorConf, line);
}

bool RefusesValues(const KOPACSZHASH* options, const StringList& numbers) {
  for (int i = 0; i < numbers.Count(); ++i) {
    const char* const value = KOPACSzHashGetValue(options, numbers[i]);
    if (value != nullptr && RefusesText(value)) return true;
  }
  return false;
}

bool AddOption(const char* vendor, const char* number, const char* value) {
  if (value == nullptr) {
    LOG_ERROR("%s:%d Failed to set vendor [%s] option, hash error", vendor);
    return false;
  }
  if (!IsOptionNumber(number)) {
    LOG_ERROR("%s:%d Failed to set vendor [%s] option, Wrong option number [%s]", vendor, number);
    return false;
  }
  if (AddOptionLine(vendor, number, value)) return true;
  LOG_ERROR("%s:%d Faild to set vendor [%s] option: KOPACFileAddLine() erorr", vendor);
  return false;
}

int ReplaceVendor(const char* vendor, const KOPACSZHASH* options, const StringList& numbers) {
  if (!MakeFolderOrLog()) return -1;
  if (!RemoveLines(std::string(kPrefix) + vendor)) {
    LOG_ERROR("%s:%d Failed to set vendor [%s] option: remove old config", vendor);
    return -1;
  }
  for (int i = 0; i < numbers.Count(); ++i) {
    if (!AddOption(vendor, numbers[i], KOPACSzHashGetValue(options, numbers[i]))) return -1;
  }
  return 0;
}

void LogSetFailure(const char* vendor) {
  LOG_ERROR("%s:%d Failed to set vendor [%s] option: parameter error", vendor);
}

void LogSetFailure(const char* vendor, int number) {
  LOG_ERROR("%s:%d Failed to set vendor [%s] option [#%d]: parameter error", vendor, number);
}

// The vendor of a line: from the first colon up to the next comma.
std::optional<std::string> VendorOf(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == 0 || colon == std::string_view::npos) return std::nullopt;
  const std::string_view rest = line.substr(colon + 1);
  const std::string_view vendor = rest.substr(0, rest.find(','));
  return vendor.empty() ? std::nullopt : std::optional(std::string(vendor));
}

}  // namespace

int DHCPVendorCheckOptNum(const char* text) {
  return Boundary(-1, [&]() -> int {
    return !IsEmpty(text) && IsOptionNumber(std::string_view(text)) ? 1 : 0;
  });
}

int DHCPVendorEnum(PKOPACSZLIST* vendors) {
  return Boundary(-1, [&]() -> int {
    if (vendors == nullptr || *vendors == nullptr) {
      LOG_ERROR("%s:%d Failed to enum vendors: parameter error");
      return -1;
    }
    const bool all = ForLinesWith(kPrefix, [vendors](const std::string& line) {
      const auto vendor = VendorOf(line);
      if (!vendor) {
        LOG_DETAIL("%s:%d wrong format [%s] in DHCP vendor config", line.c_str());
        return true;
      }
      if (KOPACSzListFind(*vendors, vendor->c_str()) >= 0) return true;
      if (KOPACSzListPush(vendors, vendor->c_str()) >= 0) return true;
      LOG_ERROR("%s:%d Failed to add vendor [%s] to list", vendor->c_str());
      return Fail(ZARNNETERR_NO_MEMORY, false);
    });
    return all ? 0 : -1;
  });
}

int DHCPVendorGetVendor(const char* vendor, PKOPACSZHASH* options) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(vendor) || options == nullptr) {
      // Only told, and gone on with: without a vendor no line is found, and without a hash the
      // first one found fails.
      LOG_ERROR("%s:%d Failed to get vendor option: parameter error");
    }
    const std::string wanted = Format("%s%s,", kPrefix, OrNothing(vendor));
    const bool all = ForLinesWith(wanted, [options](const std::string& line) {
      const auto option = Parse(line);
      if (!option) return false;
      if (options != nullptr &&
          KOPACSzHashSetValue(options, option->number.c_str(), option->value.c_str()) >= 0) {
        return true;
      }
      LOG_ERROR("%s:%d Failed to get vendor option: generate vendor hash error");
      return false;
    });
    return all ? 0 : -1;
  });
}

// A line is found by the text in it: number 1 finds that of number 12 where it comes first.
int DHCPVendorGetVendorOpt(const char* vendor, int number, char* value, std::size_t size) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(vendor) || !IsOptionNumber(number) || value == nullptr || size == 0) {
      LOG_ERROR("%s:%d get vendor [%s] option [#%d] failed: wrong input format", OrNothing(vendor),
                number);
      return -1;
    }
    if (!Exists(kVendorConf)) return 0;
    const std::string wanted = Format("%s%s,%d", kPrefix, vendor, number);
    const auto line = FindLineContaining(kVendorConf, wanted, kLineSize);
    if (!line) {
      LOG_ERROR("%s:%d KOPACFileGetLine() failed");
      return -1;
    }
    if (line->empty()) {
      LOG_DETAIL("%s:%d No match [%s] line in DHCP vendor config", wanted.c_str());
      return 0;
    }
    const auto option = Parse(*line);
    if (!option) return -1;
    CopyText(option->value, value, size);
    return 1;
  });
}

int DHCPVendorSetVendor(const char* vendor, PKOPACSZHASH options) {
  return Boundary(
      -1,
      [&]() -> int {
        if (IsEmpty(vendor) || RefusesText(vendor) || options == nullptr) {
          LogSetFailure(OrNothing(vendor));
          return -1;
        }
        StringList numbers(kLastNumber);
        if (KOPACSzHashEnumKey(options, numbers.Out()) < 0) {
          LOG_ERROR("%s:%d Failed to set vendor [%s] option: KOPACSzHashEnumKey() error", vendor);
          return -1;
        }
        if (RefusesValues(options, numbers)) {
          LogSetFailure(vendor);
          return -1;
        }
        return ReplaceVendor(vendor, options, numbers);
      },
      [&] {
        LOG_ERROR("%s:%d Failed to set vendor [%s] option: KOPACSzListAlloc() error", vendor);
      });
}

int DHCPVendorSetVendorOpt(const char* vendor, int number, const char* value) {
  return Boundary(-1, [&]() -> int {
    const bool writable = !RefusesText(OrNothing(vendor)) && !RefusesText(OrNothing(value));
    if (IsEmpty(vendor) || !IsOptionNumber(number) || IsEmpty(value) || !writable) {
      // Only told, unless the text would make more lines than one.
      LogSetFailure(HasControlCharacters(OrNothing(vendor)) ? "" : OrNothing(vendor), number);
      if (!writable) return -1;
    }
    if (!MakeFolderOrLog()) return -1;
    const std::string digits = std::to_string(number);
    if (!RemoveLines(Format("%s%s,%d", kPrefix, OrNothing(vendor), number))) {
      LOG_ERROR("%s:%d Failed to set vendor [%s] option [#%d]: remove old config",
                OrNothing(vendor), number);
      return -1;
    }
    if (AddOptionLine(OrNothing(vendor), digits.c_str(), OrNothing(value))) return 0;
    LOG_ERROR("%s:%d Faild to set vendor [%s] option [#%d]: KOPACFileAddLine() erorr",
              OrNothing(vendor), number);
    return -1;
  });
}
