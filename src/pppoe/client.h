// SPDX-License-Identifier: Apache-2.0
// The PPPoE client, for the functions of this folder and for who hangs it up. What fails sets a
// code and is logged as service_pppoe's.
#pragma once

#include <optional>

#include <zarnnetsdk/pppoe.h>

namespace pppoe {

// Without a USER only eth and defaultroute are filled.
[[nodiscard]] bool ReadAccount(PPPOE_CONF* conf);

// Is the client meant to be up, and is it? A process that runs although it is not meant to is
// stopped; fix: a switch that is on without one is turned off. Nothing on failure.
[[nodiscard]] std::optional<bool> IsConnected(bool fix);

// Turns the switch off and stops the client.
[[nodiscard]] bool HangUp();

}  // namespace pppoe
