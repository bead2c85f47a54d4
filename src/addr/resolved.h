// SPDX-License-Identifier: Apache-2.0
// The addresses behind a host's name.
#pragma once

#include <memory>
#include <netdb.h>

namespace addr {

struct FreeAddresses {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

// In the order of the system's resolver, each once. Null, with the reason logged and its code set,
// when there are none.
Addresses Resolve(const char* host);

}  // namespace addr
