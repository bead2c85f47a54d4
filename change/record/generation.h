// SPDX-License-Identifier: Apache-2.0
// What the machine was before a change: the files that the library owns, the kernel, and what ran.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "record/kernel.h"
#include "record/whole_file.h"

namespace change {

struct Generation {
  std::map<std::string, WholeFile> files;
  Kernel kernel;
  std::set<std::string> dhcpClients;  // the interfaces that have one
};

// Empty when the machine cannot be read wholly; the problem says what of it.
std::optional<Generation> KeepGeneration(std::string* problem = nullptr);

// What differs from the machine as it is now, a sentence each.
std::vector<std::string> DifferencesFrom(const Generation& generation);

// Puts files and kernel back. The order: what is new goes while its file is still there, the files,
// the kernel's settings of what is there, then what is gone comes, and its settings.
void PutBack(const Generation& generation);

// Of the files alone: for a machine of which nothing is configured yet.
std::vector<std::string> FileDifferencesFrom(const Generation& generation);
void PutBackFiles(const Generation& generation);

// Puts one file back, or removes one that was not there.
void PutBackFile(const Generation& generation, const std::string& path);

// The interfaces on which a DHCP client of IPv4 runs that keeps its lease.
std::set<std::string> InterfacesWithDhcpClient();

}  // namespace change
