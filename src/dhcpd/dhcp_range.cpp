// SPDX-License-Identifier: Apache-2.0
// The address ranges that interfaces serve, and whether a new one would overlap with another's.
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "dhcpd/switches.h"
#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

// A chain of ranges that is freed with its owner unless it is given away.
class RangeChain {
 public:
  RangeChain() = default;
  ~RangeChain() { DHCPRangeFree(head_); }
  RangeChain(const RangeChain&) = delete;
  RangeChain& operator=(const RangeChain&) = delete;

  [[nodiscard]] const DHCP_RANGE* Head() const { return head_; }
  [[nodiscard]] DHCP_RANGE* GiveAway() { return std::exchange(head_, nullptr); }
  // A zeroed range at the end; null when there is no memory for it.
  DHCP_RANGE* Append() {
    *tail_ = static_cast<DHCP_RANGE*>(std::calloc(1, sizeof(DHCP_RANGE)));
    DHCP_RANGE* const added = *tail_;
    if (added != nullptr) tail_ = &added->next;
    return added;
  }

 private:
  DHCP_RANGE* head_ = nullptr;
  DHCP_RANGE** tail_ = &head_;
};

// ---- ranges of an interface

bool IsRange(const std::vector<std::string>& items) {
  constexpr std::size_t kItems = 5;
  if (items.size() != kItems || items[1].empty() || items[2].empty() || items[3].empty()) {
    return false;
  }
  const auto start = ParseIpv4(items[1]);
  const auto end = ParseIpv4(items[2]);
  if (!start || !end) {
    LOG_ERROR("%s:%d Failed to convert IPs [%s, %s] to in_addr", items[1].c_str(),
              items[2].c_str());
    return false;
  }
  return *start <= *end;
}

bool AppendRange(const char* ifname, unsigned subnet, RangeChain* chain) {
  const auto items = ItemsOfKey(SubnetConf(kStemV4, ifname, subnet), kRange);
  if (items.empty()) {
    LOG_ERROR("%s:%d Failed to get dhcp ranges from subnet [%u] in interface [%s]", subnet, ifname);
    return false;
  }
  if (!IsRange(items)) {
    LOG_ERROR("%s:%d Wrong dhcp-range key in subnet [%u] in interface [%s]", subnet, ifname);
    return false;
  }
  DHCP_RANGE* const range = chain->Append();
  if (range == nullptr) {
    LOG_ERROR("%s:%d malloc() failed");
    return Fail(ZARNNETERR_NO_MEMORY, false);
  }
  CopyText(items[1], range->start);
  CopyText(items[2], range->end);
  CopyText(items[3], range->netmask);
  return true;
}

// Those of the subnets 0, 1, 2 ... up to the first number that is missing; their number.
std::optional<int> AppendRanges(const char* ifname, RangeChain* chain) {
  unsigned count = 0;
  for (; Exists(SubnetConf(kStemV4, ifname, count)); ++count) {
    if (!AppendRange(ifname, count, chain)) return std::nullopt;
  }
  return static_cast<int>(count);
}

// ---- conflicts

struct Network {
  Ipv4 first;
  Ipv4 last;

  [[nodiscard]] bool LiesWithin(const Network& other) const {
    return other.first <= first && last <= other.last;
  }
};

Network NetworkOf(Ipv4 address, Ipv4 mask) {
  return {address & mask, Ipv4(address.value | ~mask.value)};
}

struct Wanted {
  const char* start;
  const char* netmask;
};

bool Overlaps(const Wanted& wanted, const DHCP_RANGE& range) {
  const auto start = ParseIpv4(wanted.start);
  const auto mask = ParseIpv4(wanted.netmask);
  const auto rangeStart = ParseIpv4(range.start);
  const auto rangeMask = ParseIpv4(range.netmask);
  if (!start || !mask || !rangeStart || !rangeMask) {
    LOG_ERROR("%s:%d Failed to convert IPs [%s, %s, %s, %s] to in_addr", wanted.start, range.start,
              wanted.netmask, range.netmask);
    return false;
  }
  const Network network = NetworkOf(*start, *mask);
  const Network served = NetworkOf(*rangeStart, *rangeMask);
  return served.LiesWithin(network) || network.LiesWithin(served);
}

bool IsSlave(const char* ifname) {
  const KeyValue slave = ReadKey(paths::Ifcfg(ifname), keys::kSlave, 16);
  if (slave.Unreadable()) LOG_ERROR("%s:%d Failed to get key SLAVE on %s", ifname);
  return slave.text == "yes";
}

bool Serves(const char* ifname) {
  return !IsSlave(ifname) && Exists(paths::Ifcfg(ifname)) && IsServed(kStemV4, ifname);
}

// 1 when a range of the interface overlaps, 0 when none does, -1 when they cannot be read.
int CompareWith(const char* ifname, const Wanted& wanted) {
  if (!Serves(ifname)) return 0;
  RangeChain ranges;
  if (!AppendRanges(ifname, &ranges)) {
    LOG_ERROR("%s:%d Failed to get DHCP ranges for interface [%s]", ifname);
    return -1;
  }
  for (const DHCP_RANGE* range = ranges.Head(); range != nullptr; range = range->next) {
    if (Overlaps(wanted, *range)) return 1;
  }
  return 0;
}

}  // namespace

int DHCPGetInterfaceRanges(const char* ifname, DHCP_RANGE** ranges) {
  return Boundary(-1, [&]() -> int {
    if (IsRefusedName(ifname)) {
      LOG_ERROR("%s:%d Wrong interface name [%s]", ifname == nullptr ? "" : ifname);
      return -1;
    }
    if (ranges == nullptr || *ranges != nullptr) {
      LOG_ERROR("%s:%d Wrong dhcp range storage");
      return -1;
    }
    RangeChain chain;
    const auto count = AppendRanges(ifname, &chain);
    if (!count) return -1;
    *ranges = chain.GiveAway();
    return *count;
  });
}

void DHCPRangeFree(DHCP_RANGE* head) {
  Boundary([&] {
    while (head != nullptr)
      std::free(std::exchange(head, head->next));
  });
}

int DHCPIsRangeConflict(const char* ifname, const char* start, const char* end, const char* netmask,
                        char* conflict_if, std::size_t conflict_if_size) {
  return Boundary(-1, [&]() -> int {
    if (AnyEmpty({ifname, start, end, netmask}) ||
        (conflict_if != nullptr && conflict_if_size == 0)) {
      LOG_ERROR("%s:%d Parameters error");
      return -1;
    }
    if (conflict_if != nullptr) CopyText("", conflict_if, conflict_if_size);
    const auto ifnames = InterfacesWithSwitch(kStemV4);
    if (!ifnames) {
      LOG_ERROR("%s:%d Failed to get interface list");
      return -1;
    }
    for (const std::string& other : *ifnames) {
      if (other == ifname) continue;
      const int result = CompareWith(other.c_str(), {start, netmask});
      if (result < 0) return -1;
      if (result == 0) continue;
      if (conflict_if != nullptr) CopyText(other, conflict_if, conflict_if_size);
      return 1;
    }
    return 0;
  });
}
