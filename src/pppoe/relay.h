// SPDX-License-Identifier: Apache-2.0
// The settings of the PPPoE relays, and the relay processes, for the functions of this folder. What
// fails is logged in the name of the function of the same work.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

#include <zarnnetsdk/pppoe.h>

namespace pppoe {

inline constexpr char kEnable[] = "enable";
inline constexpr char kServer[] = "server";
inline constexpr char kYes[] = "yes";
inline constexpr char kNo[] = "no";

inline constexpr std::size_t kMaxRelays = 128;

// False for a name that can be no file's in the folder; hidden files are no interface's.
bool CanHaveSettings(const char* ifname);

// The settings of an interface, at most 43 characters.
std::string RelayFile(std::string_view ifname);

// Makes the folder with exactly this mode where it is missing. When it answers false errno says
// why.
[[nodiscard]] bool MakeRelayFolder(mode_t mode);

// Makes the folder and an empty file where they are missing.
[[nodiscard]] bool MakeRelayFile(const std::string& path);

// Reads the settings of an interface; makes an empty file where there is none.
[[nodiscard]] bool ReadRelay(const char* ifname, PPPOE_RELAY_CONF* conf);

// Starts, restarts or ends the relay of an interface, as its settings say.
[[nodiscard]] bool ApplyRelay(const char* ifname);

}  // namespace pppoe
