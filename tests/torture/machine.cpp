// Files and ports of the appliance.
#include "machine.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <net/if.h>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace torture {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolders[] = {"/etc", "/run", "/tmp", "/root"};
// Of the lock files, of the machine around, and of the table's own.
constexpr const char* kOthers[] = {"/run/lock", "/run/netns", "/run/mounts", "/run/vlans",
                                   "/etc/ssl"};
constexpr int kPorts = 4;

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
  unsigned mode = 0;
  unsigned user = 0;
  unsigned group = 0;
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

bool IsOther(const std::string& path) {
  for (const char* other : kOthers) {
    if (path == other) return true;
  }
  return false;
}

// ---- the ports, by the order in which they were made, whatever they are called

struct Port {
  ifreq request{};
  explicit Port(int index, int socket) {
    request.ifr_ifindex = index;
    ok = ::ioctl(socket, SIOCGIFNAME, &request) == 0;
  }
  bool ok;
};

const std::array<int, kPorts>& Indices() {
  static const auto indices = [] {
    std::array<int, kPorts> all{};
    for (unsigned i = 0; i < kPorts; ++i)
      all[i] = static_cast<int>(::if_nametoindex(("eth" + std::to_string(i)).c_str()));
    return all;
  }();
  return indices;
}

int Socket() {
  static const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  return fd;
}

// "NAME FLAGS MTU ADDRESS MASK" as the kernel has them, the addresses as bytes.
std::string PortText(int index) {
  Port port(index, Socket());
  std::ostringstream text;
  text << port.request.ifr_name;
  ::ioctl(Socket(), SIOCGIFFLAGS, &port.request);
  text << ' ' << (port.request.ifr_flags & (IFF_UP | IFF_PROMISC));
  ::ioctl(Socket(), SIOCGIFMTU, &port.request);
  text << ' ' << port.request.ifr_mtu << ' ';
  std::memset(&port.request.ifr_addr, 0, sizeof port.request.ifr_addr);
  if (::ioctl(Socket(), SIOCGIFADDR, &port.request) == 0)
    text << std::string_view(port.request.ifr_addr.sa_data + 2, 4);
  return text.str();
}

void PutPortBack(int index, const std::string& text) {
  if (PortText(index) == text) return;
  char name[16];
  short flags = 0;
  int mtu = 0;
  std::sscanf(text.c_str(), "%15s %hd %d", name, &flags, &mtu);
  Port port(index, Socket());
  port.request.ifr_addr = {};
  port.request.ifr_addr.sa_family = AF_INET;
  ::ioctl(Socket(), SIOCSIFADDR, &port.request);
  port.request.ifr_mtu = mtu;
  ::ioctl(Socket(), SIOCSIFMTU, &port.request);
  port.request.ifr_flags = 0;
  ::ioctl(Socket(), SIOCSIFFLAGS, &port.request);
  std::memcpy(port.request.ifr_newname, name, sizeof name);
  ::ioctl(Socket(), SIOCSIFNAME, &port.request);
  std::memcpy(port.request.ifr_name, name, sizeof name);
  port.request.ifr_flags = flags;
  ::ioctl(Socket(), SIOCSIFFLAGS, &port.request);
}

}  // namespace

Machine::Machine() {
  Indices();
}

State Machine::Look() {
  State state;
  std::map<std::string, Known> now;
  for (const char* folder : kFolders) {
    for (fs::recursive_directory_iterator at(folder), end; at != end; ++at) {
      const std::string& path = at->path().native();
      if (IsOther(path)) {
        at.disable_recursion_pending();
        continue;
      }
      Known known{};
      if (::lstat(path.c_str(), &known.status) != 0) continue;
      const auto before = known_.find(path);
      const bool same =
          before != known_.end() && before->second.status.st_ino == known.status.st_ino &&
          std::memcmp(&before->second.status.st_ctim, &known.status.st_ctim, sizeof(timespec)) == 0;
      known.node = same ? before->second.node : NodeOf(path, known.status);
      state.files[path] = known.node;
      now[path] = std::move(known);
    }
  }
  known_ = std::move(now);
  for (const int index : Indices())
    state.kernel += PortText(index) + '\n';
  char name[65] = "";
  ::gethostname(name, sizeof name);
  state.kernel += name;
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
  if (now.kernel == state.kernel) return;
  std::istringstream lines(state.kernel);
  std::string line;
  for (const int index : Indices()) {
    std::getline(lines, line);
    PutPortBack(index, line);
  }
  std::getline(lines, line, '\0');
  static_cast<void>(!::sethostname(line.c_str(), line.size()));
}

}  // namespace torture
