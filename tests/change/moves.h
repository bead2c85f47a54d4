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

// Makes a change, and expects that it is in effect and that each interface that is left was
// interrupted once at most; and that the same change again ends so and does nothing at all. Returns
// how often the DHCP server was started anew.
long MakeInOneGo(const Wish& wish, int again = 0);

}  // namespace test
