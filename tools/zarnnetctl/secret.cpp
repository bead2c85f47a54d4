// SPDX-License-Identifier: Apache-2.0
// Reads a password, without echo where it is typed.
#include "secret.h"

#include <fstream>
#include <iostream>
#include <termios.h>
#include <unistd.h>

#include "failure.h"

namespace tool {
namespace {

// What is typed on a terminal is not shown there.
class HiddenInput {
 public:
  HiddenInput() : onTerminal_(::tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!onTerminal_) return;
    std::cerr << "Password: " << std::flush;
    termios hidden = before_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
  }
  ~HiddenInput() {
    if (!onTerminal_) return;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    std::cerr << '\n';
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;

 private:
  termios before_{};
  bool onTerminal_;
};

std::string FirstLine(const std::string& what, const std::string& path, std::istream& input) {
  std::string line;
  const bool opened = input.good();
  std::getline(input, line);
  if (!opened || input.bad()) throw Failure(what, ZARNNETERR_OPEN, "cannot read '" + path + "'");
  return line;
}

}  // namespace

std::string ReadSecret(const std::string& what, const std::string& path) {
  if (path == "-") {
    const HiddenInput hidden;
    return FirstLine(what, path, std::cin);
  }
  std::ifstream file(path);
  return FirstLine(what, path, file);
}

}  // namespace tool
