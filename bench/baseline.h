// SPDX-License-Identifier: Apache-2.0
// What the library is measured against: the same work written out by hand, without library or
// frame.
#pragma once

#include <cstddef>
#include <string>

namespace baseline {

// Lists the interfaces with flags, MAC, address and mask, one socket and one reading of
// /proc/net/dev.
int Enumerate();

// Reads a key's value from a file of KEY=value lines. Its length, or -1.
int ReadKey(const char* path, const char* key, char* buffer, std::size_t size);

// Sets four keys: read, one pass, temporary file, sync, rename, sync of the folder.
bool EditFourKeys(const std::string& path, const char* value);

// Starts a program and waits for it. The exit status, or -1.
int Spawn(const char* const argv[]);
int Fork(const char* const argv[]);

}  // namespace baseline
