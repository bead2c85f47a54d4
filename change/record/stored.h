// SPDX-License-Identifier: Apache-2.0
// What a change needs to be put back, as bytes: any process can do it, also after a start.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "json.h"
#include "record/generation.h"

namespace change {

// A generation, and the state of the services that the change is about.
struct Stored {
  Generation generation;
  Json live;
  Json configured;
};

std::string BytesOf(const Stored& stored);
// Empty for bytes that are none.
std::optional<Stored> StoredOf(const std::string& bytes);

// Files by their paths; one that was removed is none.
using Files = std::map<std::string, std::optional<WholeFile>>;
std::string BytesOf(const Files& files);
std::optional<Files> FilesOf(const std::string& bytes);

}  // namespace change
