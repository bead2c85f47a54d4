// The appliance as the sweeps see it: what its files and its ports are, and how they are made so
// again.
#pragma once

#include <map>
#include <set>
#include <string>
#include <sys/stat.h>

namespace torture {

// A file's mode, owner and text (of a link: where it leads; of a folder: nothing), as one text.
using Files = std::map<std::string, std::string>;

struct State {
  Files files;
  std::string kernel;  // names, flags, MTUs and addresses of the ports; the host name
};

// Reads what has changed since it last looked.
class Machine {
 public:
  Machine();
  [[nodiscard]] State Look();
  // Makes files and ports what they were.
  void PutBack(const State& state);

 private:
  struct Known {
    struct stat status;
    std::string node;
  };
  std::map<std::string, Known> known_;
};

}  // namespace torture
