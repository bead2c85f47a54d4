// Where the settings of the PPPoE relays are kept, and how their processes are called.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace pppoe {

inline constexpr char kEnable[] = "enable";
inline constexpr char kServer[] = "server";
inline constexpr char kYes[] = "yes";
inline constexpr char kNo[] = "no";

inline constexpr int kMaxRelays = 128;

// False for a name that can be no file's in the folder; hidden files are no interface's.
bool CanHaveSettings(const char* ifname);

// The settings of an interface, at most 43 characters.
std::string RelayFile(std::string_view ifname);

// Makes the folder with exactly this mode where it is missing. When it answers false errno says
// why.
[[nodiscard]] bool MakeRelayFolder(mode_t mode);

// Makes the folder and an empty file where they are missing.
[[nodiscard]] bool MakeRelayFile(const std::string& path);

}  // namespace pppoe
