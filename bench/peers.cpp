// SPDX-License-Identifier: Apache-2.0
// What the library is shown beside: the other ways to the same answers that a Linux machine offers.
#include "peers.h"

#include <arpa/inet.h>
#include <cstring>
#include <fcntl.h>
#include <glib.h>
#include <ifaddrs.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <net/if.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace peers {
namespace {

struct Record {
  char name[IFNAMSIZ] = "";
  unsigned char mac[6] = {};
  char ip[INET_ADDRSTRLEN] = "";
  char mask[INET_ADDRSTRLEN] = "";
  unsigned flags = 0;
};

void Keep(const in_addr& address, const in_addr& mask, Record* record) {
  ::inet_ntop(AF_INET, &address, record->ip, sizeof record->ip);
  ::inet_ntop(AF_INET, &mask, record->mask, sizeof record->mask);
}

in_addr MaskOf(unsigned prefix) {
  return {htonl(prefix == 0 ? 0 : ~std::uint32_t{0} << (32 - prefix))};
}

// ---- raw netlink

// Calls take(message) for each message of the answer to a dump.
template <class Take>
bool Dump(int fd, std::uint16_t type, unsigned char family, const Take& take) {
  struct {
    nlmsghdr header;
    rtgenmsg message;
  } request{};
  request.header = {NLMSG_LENGTH(sizeof request.message), type, NLM_F_REQUEST | NLM_F_DUMP, 1, 0};
  request.message.rtgen_family = family;
  if (::send(fd, &request, request.header.nlmsg_len, 0) < 0) return false;
  alignas(nlmsghdr) static char block[1 << 16];
  for (;;) {
    const ssize_t length = ::recv(fd, block, sizeof block, 0);
    if (length <= 0) return false;
    auto rest = static_cast<unsigned>(length);
    auto* message = reinterpret_cast<nlmsghdr*>(block);
    for (; NLMSG_OK(message, rest); message = NLMSG_NEXT(message, rest)) {
      if (message->nlmsg_type == NLMSG_DONE) return true;
      if (message->nlmsg_type == NLMSG_ERROR) return false;
      take(message);
    }
  }
}

template <class Content>
const Content* ContentOf(const nlmsghdr* message) {
  return reinterpret_cast<const Content*>(reinterpret_cast<const char*>(message) + NLMSG_HDRLEN);
}

void TakeLink(const nlmsghdr* message, std::vector<Record>* records) {
  const auto* const link = ContentOf<ifinfomsg>(message);
  const auto index = static_cast<std::size_t>(link->ifi_index);
  if (records->size() <= index) records->resize(index + 1);
  Record& record = (*records)[index];
  record.flags = link->ifi_flags;
  auto rest = static_cast<unsigned>(IFLA_PAYLOAD(message));
  for (const rtattr* field = IFLA_RTA(link); RTA_OK(field, rest); field = RTA_NEXT(field, rest)) {
    if (field->rta_type == IFLA_IFNAME)
      std::memcpy(record.name, RTA_DATA(field), RTA_PAYLOAD(field));
    if (field->rta_type == IFLA_ADDRESS && RTA_PAYLOAD(field) == sizeof record.mac)
      std::memcpy(record.mac, RTA_DATA(field), sizeof record.mac);
  }
}

void TakeAddress(const nlmsghdr* message, std::vector<Record>* records) {
  const auto* const address = ContentOf<ifaddrmsg>(message);
  if (records->size() <= address->ifa_index) return;
  Record& record = (*records)[address->ifa_index];
  if (record.ip[0] != '\0') return;  // the first one counts
  auto rest = static_cast<unsigned>(IFA_PAYLOAD(message));
  for (const rtattr* field = IFA_RTA(address); RTA_OK(field, rest); field = RTA_NEXT(field, rest)) {
    if (field->rta_type != IFA_LOCAL) continue;
    in_addr local{};
    std::memcpy(&local, RTA_DATA(field), sizeof local);
    Keep(local, MaskOf(address->ifa_prefixlen), &record);
  }
}

int CountUp(const std::vector<Record>& records) {
  int count = 0;
  for (const Record& record : records)
    count += (record.flags & IFF_UP) != 0 ? 1 : 0;
  return count;
}

// ---- libnl

void KeepLink(nl_object* object, void* records) {
  auto* const link = reinterpret_cast<rtnl_link*>(object);
  const auto index = static_cast<std::size_t>(rtnl_link_get_ifindex(link));
  auto* const list = static_cast<std::vector<Record>*>(records);
  if (list->size() <= index) list->resize(index + 1);
  Record& record = (*list)[index];
  record.flags = rtnl_link_get_flags(link);
  g_strlcpy(record.name, rtnl_link_get_name(link), sizeof record.name);
  const nl_addr* const mac = rtnl_link_get_addr(link);
  if (mac != nullptr && nl_addr_get_len(mac) == sizeof record.mac)
    std::memcpy(record.mac, nl_addr_get_binary_addr(mac), sizeof record.mac);
}

void KeepAddress(nl_object* object, void* records) {
  auto* const address = reinterpret_cast<rtnl_addr*>(object);
  auto* const list = static_cast<std::vector<Record>*>(records);
  const auto index = static_cast<std::size_t>(rtnl_addr_get_ifindex(address));
  if (rtnl_addr_get_family(address) != AF_INET || list->size() <= index) return;
  Record& record = (*list)[index];
  if (record.ip[0] != '\0') return;
  in_addr local{};
  std::memcpy(&local, nl_addr_get_binary_addr(rtnl_addr_get_local(address)), sizeof local);
  Keep(local, MaskOf(static_cast<unsigned>(rtnl_addr_get_prefixlen(address))), &record);
}

// ---- GLib

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

KeyFile Load(const std::string& path) {
  KeyFile file(g_key_file_new(), &g_key_file_unref);
  if (g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr) == 0)
    file.reset();
  return file;
}

}  // namespace

int ByGetifaddrs() {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return -1;
  int count = 0;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    const bool isLink = entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_PACKET;
    count += isLink && (entry->ifa_flags & IFF_UP) != 0 ? 1 : 0;
  }
  ::freeifaddrs(list);
  return count;
}

int ByNetlink() {
  const int fd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (fd < 0) return -1;
  std::vector<Record> records;
  const bool ok =
      Dump(fd, RTM_GETLINK, AF_UNSPEC, [&](const nlmsghdr* m) { TakeLink(m, &records); }) &&
      Dump(fd, RTM_GETADDR, AF_INET, [&](const nlmsghdr* m) { TakeAddress(m, &records); });
  ::close(fd);
  return ok ? CountUp(records) : -1;
}

int ByLibnl() {
  std::vector<Record> records;
  nl_sock* const socket = nl_socket_alloc();
  nl_cache* links = nullptr;
  nl_cache* addresses = nullptr;
  const bool ok = nl_connect(socket, NETLINK_ROUTE) == 0 &&
                  rtnl_link_alloc_cache(socket, AF_UNSPEC, &links) == 0 &&
                  rtnl_addr_alloc_cache(socket, &addresses) == 0;
  if (ok) {
    nl_cache_foreach(links, KeepLink, &records);
    nl_cache_foreach(addresses, KeepAddress, &records);
  }
  nl_cache_free(addresses);
  nl_cache_free(links);
  nl_socket_free(socket);
  return ok ? CountUp(records) : -1;
}

bool ReadKeyByGlib(const std::string& path, const char* key) {
  const KeyFile file = Load(path);
  if (!file) return false;
  char* const value = g_key_file_get_value(file.get(), kSection, key, nullptr);
  const bool found = value != nullptr;
  g_free(value);
  return found;
}

bool EditFourKeysByGlib(const std::string& path, const char* value) {
  const KeyFile file = Load(path);
  if (!file) return false;
  for (const char* key : {"KEY2", "KEY4", "KEY6", "KEY8"})
    g_key_file_set_value(file.get(), kSection, key, value);
  return g_key_file_save_to_file(file.get(), path.c_str(), nullptr) != 0;
}

Flock::Flock(const char* path) : fd_(::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {}

Flock::~Flock() {
  ::close(fd_);
}

void Flock::Take() const {
  while (::flock(fd_, LOCK_EX) != 0) {
  }
}

void Flock::Release() const {
  ::flock(fd_, LOCK_UN);
}

}  // namespace peers
