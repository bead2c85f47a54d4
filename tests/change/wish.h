// SPDX-License-Identifier: Apache-2.0
// Wishes as a test makes them; what is answered stands in the case's transcript.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "wishes.h"

namespace test {

// Makes the change: its report, in lines, behind what it did to the machine.
void Make(const std::string& wish, const std::string& options = "{}");

// One after the other.
void MakeAll(const std::vector<Wish>& wishes);

// A port as an administrator has it: a second address, the default route, an address of IPv6.
void SetUpEth0();

// Only asks whether it may be made.
void Ask(const std::string& wish, const std::string& options = "{}");

// What is random of it is made before a transcript begins.
void MakeCipherKey();

// Reads the state as a document.
nlohmann::json State(const std::string& options = "{}");

}  // namespace test
