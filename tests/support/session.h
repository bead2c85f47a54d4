// SPDX-License-Identifier: Apache-2.0
// A host of the LAN that is connected with this process, as over SSH.
#pragma once

#include <arpa/inet.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <utility>

#include "support/children.h"

namespace test {

class NeighboursSession {
 public:
  explicit NeighboursSession(std::string address) : own_(std::move(address)) {
    sockaddr_in any{};
    any.sin_family = AF_INET;
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    const int bound = ::bind(listener, reinterpret_cast<sockaddr*>(&any), sizeof any);
    EXPECT_EQ(bound + ::listen(listener, 1), 0);
    socklen_t length = sizeof any;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&any), &length);
    port_ = std::to_string(ntohs(any.sin_port));
    const std::string talk = "exec 3<>/dev/tcp/" + own_ + "/" + port_ + "; read -r _ <&3";
    client_ = Start([&] {
      return ::execlp("ip", "ip", "netns", "exec", "lan", "bash", "-c", talk.c_str(), nullptr);
    });
    constexpr int kPatience = 30000;
    pollfd called{listener, POLLIN, 0};
    EXPECT_EQ(::poll(&called, 1, kPatience), 1) << own_ << " was not reached";
    length = sizeof peer_;
    socket_ = ::accept4(listener, reinterpret_cast<sockaddr*>(&peer_), &length, SOCK_NONBLOCK);
    ::close(listener);
    ::setenv("SSH_CONNECTION", Variable().c_str(), 1);
  }
  ~NeighboursSession() {
    ::unsetenv("SSH_CONNECTION");
    ::close(socket_);
    KillAndReap(client_);
  }
  NeighboursSession(const NeighboursSession&) = delete;
  NeighboursSession& operator=(const NeighboursSession&) = delete;

 private:
  [[nodiscard]] std::string Variable() const {
    char peer[INET_ADDRSTRLEN] = "";
    ::inet_ntop(AF_INET, &peer_.sin_addr, peer, sizeof peer);
    return std::string(peer) + " " + std::to_string(ntohs(peer_.sin_port)) + " " + own_ + " " +
           port_;
  }

  std::string own_;
  std::string port_;
  pid_t client_ = 0;
  int socket_ = -1;
  sockaddr_in peer_{};
};

}  // namespace test
