// SPDX-License-Identifier: Apache-2.0
// What the kernel tells of links, addresses and routes as it changes them.
#pragma once

#include <libmnl/libmnl.h>
#include <memory>
#include <vector>

#include "output.h"

namespace tool {

class KernelEvents {
 public:
  // Listens from here on. Throws a Failure when the kernel does not let it.
  KernelEvents();

  [[nodiscard]] int Descriptor() const { return ::mnl_socket_get_fd(socket_.get()); }

  // What has been told since; one object with "kind", "action" and "interface" an event. A kernel
  // that had to drop some says so by an event of kind "lost".
  std::vector<Json> Take();

 private:
  struct Close {
    void operator()(mnl_socket* socket) const { ::mnl_socket_close(socket); }
  };
  std::unique_ptr<mnl_socket, Close> socket_;
};

}  // namespace tool
