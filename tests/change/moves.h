// SPDX-License-Identifier: Apache-2.0
// Changes that take something apart and make something else of it.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "wishes.h"

namespace test {

// How often each interface that was up goes down or away in the course of the call.
std::map<std::string, int> InterruptionsIn(const std::function<void()>& call);

// Makes a change, and expects that it is in effect, that each interface was interrupted once at
// most, and the DHCP server too; and that the same change again ends so and does nothing at all.
void MakeInOneGo(const Wish& wish, int again = 0);

}  // namespace test
