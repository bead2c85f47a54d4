// SPDX-License-Identifier: Apache-2.0
// A shell that became another user's, or runs in a terminal multiplexer, has an ancestor that knows
// the session; the kernel's table of sockets says whether it is still one.
#include "record/caller.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <pwd.h>
#include <sstream>
#include <unistd.h>
#include <vector>

#include "frame/model/paths.h"
#include "record/process.h"

namespace change {
namespace {

struct Socket {
  std::string local;
  std::string remote;
  unsigned localPort = 0;
  unsigned remotePort = 0;
  std::string inode;
};

// "0A32A8C0" and "0000000000000000FFFF00000A32A8C0": words in the machine's order of bytes.
std::string AddressIn(const std::string& digits) {
  constexpr std::size_t kWord = 8;
  std::array<std::uint32_t, 4> words{};
  const std::size_t count = std::min(digits.size() / kWord, words.size());
  for (std::size_t i = 0; i < count; ++i)
    words[i] = static_cast<std::uint32_t>(std::stoul(digits.substr(i * kWord, kWord), nullptr, 16));
  const bool mapped = count == 4 && words[0] == 0 && words[1] == 0 && words[2] == htonl(0xFFFF);
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (count == 1 || mapped) {
    ::inet_ntop(AF_INET, &words[count - 1], text.data(), text.size());
  } else {
    ::inet_ntop(AF_INET6, words.data(), text.data(), text.size());
  }
  return text.data();
}

// A line of the table: number, local, remote, state, five more, the socket's number.
void TakeSocket(const std::string& line, std::vector<Socket>* sockets) {
  constexpr char kEstablished[] = "01";
  constexpr std::size_t kState = 3;
  constexpr std::size_t kInode = 9;
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    words.push_back(word);
  if (words.size() <= kInode || words[kState] != kEstablished) return;
  Socket socket;
  const auto end = [](const std::string& word, std::string* address, unsigned* port) {
    const std::size_t colon = word.find(':');
    *address = AddressIn(word.substr(0, colon));
    *port = static_cast<unsigned>(std::stoul(word.substr(colon + 1), nullptr, 16));
  };
  end(words[1], &socket.local, &socket.localPort);
  end(words[2], &socket.remote, &socket.remotePort);
  socket.inode = words[kInode];
  sockets->push_back(std::move(socket));
}

std::vector<Socket> EstablishedSockets() {
  std::vector<Socket> sockets;
  for (const char* path : {frame::paths::kProcTcp, frame::paths::kProcTcp6}) {
    std::ifstream file(path);
    std::string line;
    for (std::getline(file, line); std::getline(file, line);)
      TakeSocket(line, &sockets);
  }
  return sockets;
}

std::string VariableOf(const std::string& pid, const std::string& name) {
  if (pid == std::to_string(::getpid())) {
    const char* const value = std::getenv(name.c_str());
    return value != nullptr ? value : "";
  }
  std::ifstream file("/proc/" + pid + "/environ");
  for (std::string entry; std::getline(file, entry, '\0');) {
    if (entry.starts_with(name + "=")) return entry.substr(name.size() + 1);
  }
  return {};
}

// "CLIENT PORT SERVER PORT", or without the server in the older variable.
bool Means(const std::string& text, const Socket& socket) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    words.push_back(word.substr(0, word.find('%')));  // without a link-local address's interface
  return words.size() >= 3 && words[0] == socket.remote &&
         words[1] == std::to_string(socket.remotePort) &&
         words.back() == std::to_string(socket.localPort);
}

bool IsInputOrOutput(const std::string& pid, const Socket& socket) {
  const std::string wanted = "socket:[" + socket.inode + "]";
  for (const char* fd : {"0", "1", "2"}) {
    std::array<char, 64> target{};
    const std::string link = "/proc/" + pid + "/fd/" + fd;
    if (::readlink(link.c_str(), target.data(), target.size() - 1) > 0 && wanted == target.data())
      return true;
  }
  return false;
}

}  // namespace

std::optional<Session> CallersSession() {
  const auto sockets = EstablishedSockets();
  if (sockets.empty()) return std::nullopt;
  for (const std::string& pid : OwnLine()) {
    const std::string connection = VariableOf(pid, "SSH_CONNECTION");
    const std::string client = VariableOf(pid, "SSH_CLIENT");
    const auto found = std::find_if(sockets.begin(), sockets.end(), [&](const Socket& socket) {
      return Means(connection, socket) || Means(client, socket) || IsInputOrOutput(pid, socket);
    });
    if (found != sockets.end()) return Session{found->remote, found->local};
  }
  return std::nullopt;
}

std::string CallersConnection() {
  for (const std::string& pid : OwnLine()) {
    for (const char* name : {"SSH_CONNECTION", "SSH_CLIENT"}) {
      std::string connection = VariableOf(pid, name);
      if (!connection.empty()) return connection;
    }
  }
  return {};
}

Json CallerAsJson() {
  constexpr std::size_t kRoom = 4096;
  Json who{{"uid", ::getuid()}};
  std::ifstream file("/proc/self/loginuid");
  uid_t login = ::getuid();
  constexpr auto kNobodyLoggedIn = static_cast<uid_t>(-1);
  if (uid_t asked = kNobodyLoggedIn; file >> asked && asked != kNobodyLoggedIn) login = asked;
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, kRoom> room{};
  if (::getpwuid_r(login, &entry, room.data(), room.size(), &found) == 0 && found != nullptr)
    who["login"] = found->pw_name;
  if (const char* const sudo = std::getenv("SUDO_USER")) who["sudo"] = sudo;
  return who;
}

}  // namespace change
