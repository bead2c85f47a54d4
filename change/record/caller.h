// SPDX-License-Identifier: Apache-2.0
// Who asks for a change, and over which connection.
#pragma once

#include <optional>
#include <string>

#include "json.h"

namespace change {

// A TCP connection over which somebody works at this machine.
struct Session {
  std::string client;  // addresses as texts
  std::string server;
};

// Of this process or the nearest of its ancestors that is part of one: by the session's
// environment, or a socket as its input or output. Only one that the kernel still has; empty for
// none.
std::optional<Session> CallersSession();

// What the environment says of the connection, in use or not: client, port, server, port.
std::string CallersConnection();

// "uid", "login", "sudo" (who became root by it).
Json CallerAsJson();

}  // namespace change
