// SPDX-License-Identifier: Apache-2.0
#include "steps/settings.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "document/machine.h"

namespace change {
namespace {

constexpr char kSettings[] = "/etc/zarnnet.conf";

// What is no number within the limits is as if it were not there.
long NumberAt(const char* key, long least, long most, long without) {
  const std::string text = KeyOf(kSettings, key);
  long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= least && number <= most ? number : without;
}

}  // namespace

KeepSettings ReadKeepSettings() {
  constexpr long kMost = 100000;
  return {NumberAt("keep_changes", 1, kMost, 50), NumberAt("keep_days", 0, kMost, 30),
          NumberAt("keep_records", 1, kMost, 1000)};
}

long ConfirmSeconds() {
  constexpr long kDay = 24L * 60 * 60;
  return NumberAt("confirm_seconds", 1, kDay, 60);
}

}  // namespace change
