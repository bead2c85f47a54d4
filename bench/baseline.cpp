// SPDX-License-Identifier: Apache-2.0
// What the library is measured against: the same work written out by hand, without library or
// frame.
#include "baseline.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/if_vlan.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace baseline {
namespace {

struct Buffer {
  char* data = nullptr;
  std::size_t size = 0;
  ~Buffer() { std::free(data); }
};

bool ReadWhole(const char* path, Buffer* buffer, struct stat* status) {
  const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  ::fstat(fd, status);
  buffer->data = static_cast<char*>(std::malloc(static_cast<std::size_t>(status->st_size) + 1));
  const ssize_t length = ::read(fd, buffer->data, static_cast<std::size_t>(status->st_size));
  ::close(fd);
  if (length < 0) return false;
  buffer->size = static_cast<std::size_t>(length);
  return true;
}

struct Record {
  char name[16];
  unsigned char mac[6];
  char ip[16];
  char mask[16];
  short flags;
};

using Name = char[IFNAMSIZ];

void Ask(int fd, const Name& name, short flags, Record* record) {
  ifreq request{};
  std::memcpy(request.ifr_name, name, sizeof request.ifr_name);
  std::memcpy(record->name, name, sizeof record->name);
  record->flags = flags;
  if (::ioctl(fd, SIOCGIFHWADDR, &request) == 0) {
    std::memcpy(record->mac, request.ifr_hwaddr.sa_data, sizeof record->mac);
  }
  sockaddr_in address{};
  if (::ioctl(fd, SIOCGIFADDR, &request) == 0) {
    std::memcpy(&address, &request.ifr_addr, sizeof address);
    ::inet_ntop(AF_INET, &address.sin_addr, record->ip, sizeof record->ip);
  }
  if (::ioctl(fd, SIOCGIFNETMASK, &request) == 0) {
    std::memcpy(&address, &request.ifr_netmask, sizeof address);
    ::inet_ntop(AF_INET, &address.sin_addr, record->mask, sizeof record->mask);
  }
}

bool IsPort(const Name& name) {
  char path[128];
  std::snprintf(path, sizeof path, "/sys/class/net/%.15s/brport", name);
  if (::access(path, F_OK) == 0) return true;
  std::snprintf(path, sizeof path, "/sys/devices/virtual/net/ovs_%.15s", name);
  return ::access(path, F_OK) == 0;
}

int ReadNames(char names[][IFNAMSIZ], int max) {
  std::FILE* const file = std::fopen("/proc/net/dev", "re");
  if (file == nullptr) return -1;
  char line[512];
  int count = 0;
  while (count < max && std::fgets(line, sizeof line, file) != nullptr) {
    char* const colon = std::strchr(line, ':');
    if (colon == nullptr) continue;
    *colon = '\0';
    const char* const name = line + std::strspn(line, " ");
    std::snprintf(names[count++], IFNAMSIZ, "%.15s", name);
  }
  std::fclose(file);
  std::qsort(names, static_cast<std::size_t>(count), IFNAMSIZ, [](const void* a, const void* b) {
    return strverscmp(static_cast<const char*>(a), static_cast<const char*>(b));
  });
  return count;
}

}  // namespace

int Enumerate() {
  // The state of the appliance that decides what is listed.
  ::access("/sys/module/8021q", F_OK);
  ::access("/etc/zarnha.conf", F_OK);
  char names[32][IFNAMSIZ];
  Record records[32] = {};
  const int count = ReadNames(names, 32);
  const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  int listed = 0;
  for (int i = 0; i < count; ++i) {
    ifreq request{};
    std::memcpy(request.ifr_name, names[i], IFNAMSIZ);
    if (::ioctl(fd, SIOCGIFFLAGS, &request) != 0) continue;
    const short flags = request.ifr_flags;
    ::access("/sys/class/net/zarn_ovs_bonds", F_OK);
    if ((flags & IFF_UP) == 0 || (flags & IFF_LOOPBACK) != 0 || IsPort(names[i])) continue;
    Ask(fd, names[i], flags, &records[listed++]);
  }
  ::close(fd);
  return listed;
}

int ReadKey(const char* path, const char* key, char* buffer, std::size_t size) {
  Buffer file;
  struct stat status {};
  if (!ReadWhole(path, &file, &status)) return -1;
  const std::size_t keyLength = std::strlen(key);
  const char* const end = file.data + file.size;
  for (const char* line = file.data; line < end;) {
    const auto* newline =
        static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line)));
    if (newline == nullptr) newline = end;
    const auto length = static_cast<std::size_t>(newline - line);
    if (length > keyLength && line[keyLength] == '=' && std::memcmp(line, key, keyLength) == 0) {
      const std::size_t valueLength = std::min(length - keyLength - 1, size - 1);
      std::memcpy(buffer, line + keyLength + 1, valueLength);
      buffer[valueLength] = '\0';
      return static_cast<int>(valueLength);
    }
    line = newline + 1;
  }
  return 0;
}

bool EditFourKeys(const std::string& path, const char* value) {
  static const char* const kKeys[] = {"KEY2", "KEY4", "KEY6", "KEY8"};
  Buffer file;
  struct stat status {};
  if (!ReadWhole(path.c_str(), &file, &status)) return false;
  const std::size_t valueLength = std::strlen(value);
  auto* const out = static_cast<char*>(std::malloc(file.size + 4 * (valueLength + 8)));
  std::size_t used = 0;
  const char* const end = file.data + file.size;
  for (const char* line = file.data; line < end;) {
    const auto* newline =
        static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line)));
    const auto length = static_cast<std::size_t>(newline - line) + 1;
    const char* found = nullptr;
    for (const char* key : kKeys) {
      if (length > 5 && line[4] == '=' && std::memcmp(line, key, 4) == 0) found = key;
    }
    if (found != nullptr) {
      std::memcpy(out + used, line, 5);
      std::memcpy(out + used + 5, value, valueLength);
      used += 5 + valueLength;
      out[used++] = '\n';
    } else {
      std::memcpy(out + used, line, length);
      used += length;
    }
    line = newline + 1;
  }
  std::string temporary = path + ".XXXXXX";
  const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
  bool ok = ::fchmod(fd, status.st_mode) == 0 && ::fchown(fd, status.st_uid, status.st_gid) == 0;
  ok = ok && ::write(fd, out, used) == static_cast<ssize_t>(used) && ::fsync(fd) == 0;
  std::free(out);
  ::close(fd);
  ok = ok && ::rename(temporary.c_str(), path.c_str()) == 0;
  const int folder =
      ::open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ok = ok && ::fsync(folder) == 0;
  ::close(folder);
  return ok;
}

int Spawn(const char* const argv[]) {
  pid_t child = 0;
  if (::posix_spawn(&child, argv[0], nullptr, nullptr, const_cast<char* const*>(argv), environ) !=
      0) {
    return -1;
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Fork(const char* const argv[]) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::execv(argv[0], const_cast<char* const*>(argv));
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace baseline
