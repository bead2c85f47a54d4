// SPDX-License-Identifier: Apache-2.0
// Files and ports of the appliance.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <net/if.h>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

#include "torture.h"

namespace torture {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolders[] = {"/etc", "/run", "/tmp", "/root"};
// Of the lock files, of the machine around, and of the table's own.
const std::set<std::string> kOthers = {"/run/lock", "/run/netns", "/run/mounts", "/run/vlans",
                                       "/etc/ssl"};

std::string NodeOf(const std::string& path, const struct stat& status) {
  std::ostringstream node;
  // The sticky bit of a file means nothing, but that it was new a moment ago.
  const mode_t mode = S_ISREG(status.st_mode) ? status.st_mode & ~S_ISVTX : status.st_mode;
  node << std::oct << mode << ' ' << status.st_uid << ' ' << status.st_gid << '\n';
  if (S_ISREG(status.st_mode)) node << std::ifstream(path, std::ios::binary).rdbuf();
  if (S_ISLNK(status.st_mode)) node << fs::read_symlink(path).string();
  return node.str();
}

void Make(const std::string& path, const std::string& node) {
  unsigned mode = 0, user = 0, group = 0;
  std::sscanf(node.c_str(), "%o %o %o", &mode, &user, &group);
  const std::string text = node.substr(node.find('\n') + 1);
  if (S_ISDIR(mode)) {
    ::mkdir(path.c_str(), 0700);
  } else if (S_ISLNK(mode)) {
    fs::remove(path);
    fs::create_symlink(text, path);
    return;
  } else {
    fs::remove_all(path);
    std::ofstream(path, std::ios::binary) << text;
  }
  static_cast<void>(::chown(path.c_str(), user, group) + ::chmod(path.c_str(), mode & 07777));
}

// A port, by the order in which they were made, whatever it is called.
class Port {
 public:
  static constexpr int kCount = 4;
  explicit Port(int number) : own_("eth" + std::to_string(number)) {
    static std::map<std::string, unsigned> indices;
    unsigned& index = indices[own_];
    if (index == 0) index = ::if_nametoindex(own_.c_str());
    request_.ifr_ifindex = static_cast<int>(index);
    Ask(SIOCGIFNAME);
  }
  // Name, address, and what the program ip takes.
  std::string Text() {
    std::string text = request_.ifr_name;
    if (Ask(SIOCGIFADDR)) text.append(request_.ifr_addr.sa_data + 2, 4);
    Ask(SIOCGIFFLAGS);
    text += (request_.ifr_flags & IFF_PROMISC) != 0 ? "\tpromisc on" : "\tpromisc off";
    text += (request_.ifr_flags & IFF_UP) != 0 ? " up" : " down";
    Ask(SIOCGIFMTU);
    return text + " mtu " + std::to_string(request_.ifr_mtu);
  }
  // Under its own name again.
  void PutBack(const std::string& text) {
    request_.ifr_flags = 0;
    Ask(SIOCSIFFLAGS);
    own_.copy(request_.ifr_newname, IFNAMSIZ);
    Ask(SIOCSIFNAME);
    Shell("PATH=/host/usr/bin; ip -4 address flush dev " + own_ + "; ip link set " + own_ + " " +
          text.substr(text.rfind('\t') + 1));
  }

 private:
  bool Ask(unsigned long what) {
    static const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    return ::ioctl(socket, what, &request_) == 0;
  }
  ifreq request_{};
  std::string own_;
};

}  // namespace

State Machine::Look() {
  State state;
  std::map<std::string, Known> now;
  for (const char* folder : kFolders) {
    struct stat root {};
    ::stat(folder, &root);
    for (fs::recursive_directory_iterator at(folder), end; at != end; ++at) {
      const std::string& path = at->path().native();
      Known known{};
      if (kOthers.count(path) != 0) {
        at.disable_recursion_pending();
        continue;
      }
      if (::lstat(path.c_str(), &known.status) != 0) continue;
      if (known.status.st_dev != root.st_dev) {  // mounted here: the sources, where they lie below
        at.disable_recursion_pending();
        continue;
      }
      const struct stat& old = known_[path].status;
      const bool same = old.st_ino == known.status.st_ino &&
                        std::memcmp(&old.st_ctim, &known.status.st_ctim, sizeof old.st_ctim) == 0;
      known.node = same ? known_[path].node : NodeOf(path, known.status);
      state.files[path] = known.node;
      now[path] = std::move(known);
    }
  }
  known_ = std::move(now);
  for (int port = 0; port < Port::kCount; ++port)
    state.ports.push_back(Port(port).Text());
  char name[65] = "";
  ::gethostname(name, sizeof name);
  state.hostname = name;
  return state;
}

void Machine::PutBack(const State& state) {
  const State now = Look();
  for (const auto& [path, node] : now.files) {
    if (state.files.count(path) == 0) fs::remove_all(path);
  }
  for (const auto& [path, node] : state.files) {
    const auto found = now.files.find(path);
    if (found == now.files.end() || found->second != node) Make(path, node);
  }
  for (int port = 0; port < Port::kCount; ++port) {
    const std::string& wanted = state.ports.at(port);
    if (now.ports.at(port) != wanted) Port(port).PutBack(wanted);
  }
  if (now.hostname != state.hostname)
    static_cast<void>(!::sethostname(state.hostname.c_str(), state.hostname.size()));
}

}  // namespace torture
