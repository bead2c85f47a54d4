// SPDX-License-Identifier: Apache-2.0
#include "moves.h"

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <iostream>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <utility>
#include <vector>
#include <zarnnetchange/change.h>

#include "support/appliance.h"
#include "traced.h"
#include "wish.h"

namespace test {
namespace {

class Interruptions {
 public:
  Interruptions() : socket_(::mnl_socket_open2(NETLINK_ROUTE, SOCK_NONBLOCK | SOCK_CLOEXEC)) {
    constexpr int kRoom = 4 << 20;
    ::setsockopt(::mnl_socket_get_fd(socket_), SOL_SOCKET, SO_RCVBUFFORCE, &kRoom, sizeof kRoom);
    EXPECT_EQ(0, ::mnl_socket_bind(socket_, RTMGRP_LINK, MNL_SOCKET_AUTOPID));
    const auto state = State(R"({"view":"live"})");
    for (const auto& [ifname, link] : state["interfaces"].items())
      up_[ifname] = link["up"];
  }
  ~Interruptions() { ::mnl_socket_close(socket_); }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

  const std::map<std::string, int>& Counts() {
    std::vector<char> buffer(65536);
    for (ssize_t length = 0;
         (length = ::mnl_socket_recvfrom(socket_, buffer.data(), buffer.size())) > 0;) {
      ::mnl_cb_run(buffer.data(), static_cast<std::size_t>(length), 0, 0, Take, this);
    }
    EXPECT_EQ(EAGAIN, errno);
    return counts_;
  }

 private:
  static int Take(const nlmsghdr* header, void* self) {
    const auto* const link = static_cast<const ifinfomsg*>(::mnl_nlmsg_get_payload(header));
    if (link->ifi_family != AF_UNSPEC) return MNL_CB_OK;  // what a bridge says of its ports
    std::string ifname;
    ::mnl_attr_parse(
        header, sizeof *link,
        [](const nlattr* attribute, void* name) {
          if (::mnl_attr_get_type(attribute) == IFLA_IFNAME)
            *static_cast<std::string*>(name) = ::mnl_attr_get_str(attribute);
          return MNL_CB_OK;
        },
        &ifname);
    const bool up = header->nlmsg_type == RTM_NEWLINK && (link->ifi_flags & IFF_UP) != 0;
    auto* const counts = static_cast<Interruptions*>(self);
    if (std::exchange(counts->up_[ifname], up) && !up) ++counts->counts_[ifname];
    return MNL_CB_OK;
  }

  mnl_socket* socket_;
  std::map<std::string, bool> up_;
  std::map<std::string, int> counts_;
};

// Files with all that a write changes of them, what the kernel has, what plugins were told.
std::string Everything() {
  return Shell(
             "find /etc /var/lib /root -printf '%p %i %m %T@ %C@\\n' | sort;"
             "ip -4 address; ip -6 -br address show scope global; ip route show table all | grep "
             "-v :") +
         std::to_string(Events().size());
}

}  // namespace

std::map<std::string, int> InterruptionsIn(const std::function<void()>& call) {
  Interruptions interruptions;
  call();
  return interruptions.Counts();
}

long MakeInOneGo(const Wish& wish, int again) {
  SCOPED_TRACE(wish.wish);
  if (wish.before != nullptr) Shell(wish.before);
  const auto make = [&] {
    char* report = nullptr;
    const int result =
        ZARNNetChangeApply(wish.wish.c_str(), wish.options.c_str(), nullptr, nullptr, &report);
    if (result != ZARNNETCHANGE_DONE)
      std::cerr << report << "\n";  // not in a buffer: it is made in a child
    ZARNNetChangeFree(report);
    return result;
  };
  int result = -1;
  std::vector<Call> calls;
  const auto interruptions = InterruptionsIn([&] { calls = TraceCalls(make, &result); });
  EXPECT_EQ(result, ZARNNETCHANGE_DONE);
  for (const auto& [ifname, count] : interruptions)
    EXPECT_LE(count, ::if_nametoindex(ifname.c_str()) != 0 ? 1 : 2) << ifname;
  const auto restarts = std::count_if(calls.begin(), calls.end(), [](const Call& call) {
    return call.words.starts_with("rc.network nat-");
  });

  const std::string before = Everything();
  EXPECT_EQ(TraceCalls(make, &result).size(), 0U);
  EXPECT_EQ(result, again);
  EXPECT_EQ(Everything(), before);
  return restarts;
}

}  // namespace test
