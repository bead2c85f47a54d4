// SPDX-License-Identifier: Apache-2.0
// What the readers and writers of the DHCP server's files share: lines, whole files, refusals.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <zarnnetsdk/dhcpd.h>

#include "frame/base/place.h"
#include "frame/base/text.h"
#include "frame/model/dhcp_files.h"

namespace dhcpd {

inline const char* YesOrNo(bool yes) {
  return yes ? frame::dhcp_files::kYes : frame::dhcp_files::kNo;
}

// Does the file say that what it is about is switched on? No as well without the file.
bool IsSwitchedOn(const std::string& path);

// Runs mkdir for the folder, which the appliance makes on demand. A failure is logged in the
// caller's name.
[[nodiscard]] bool MakeFolderOrLog(const frame::Place& at = {});

// Replaces a fragment by the text, or a switch, which keeps its mode and owner, by its single line.
// A failure is logged in the caller's name.
[[nodiscard]] bool WriteFragmentOrLog(const std::string& path, std::string_view text,
                                      const frame::Place& at = {});
[[nodiscard]] bool WriteSwitchOrLog(const std::string& path, bool enable,
                                    const frame::Place& at = {});

// ---- lines of a fragment
std::string InterfaceLine(std::string_view ifname);
std::string RangeLine(std::string_view tag, std::string_view start, std::string_view end,
                      std::string_view mask, int lease);
std::string OptionLine(std::string_view tag, std::string_view option, std::string_view value);

// The first line with the text in it, split at commas; empty fields stay. Empty without the line.
std::vector<std::string> ItemsOfLineWith(const std::string& path, const char* text);

// The value of the key, split the same way. Empty without the key.
std::vector<std::string> ItemsOfKey(const std::string& path, const char* key);

// ---- what is never written
// A text that would add a line to a file, or lead out of the folder, is refused with 0x0D00; what
// is just missing or of an unknown kind is told by result and log, where nothing else is said.
// These set the code and answer true when they refuse; an empty name is true too, without a code.
bool IsRefusedName(const char* name);
bool RefusesText(std::string_view text);
bool RefusesTexts(const DHCP_SUBNET_CONF& conf);

}  // namespace dhcpd
