// SPDX-License-Identifier: Apache-2.0
// One conversation with the kernel over netlink.
#pragma once

#include <functional>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <string>
#include <utility>
#include <vector>

namespace change {

// Room for any message that is sent.
inline constexpr std::size_t kMessageSize = 8192;

// Of a message that is kept as a text, whose bytes are aligned for its numbers.
inline nlmsghdr* HeaderOf(std::string* message) {
  return static_cast<nlmsghdr*>(static_cast<void*>(message->data()));
}

class Netlink {
 public:
  Netlink() : socket_(::mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC)) {
    if (socket_ != nullptr && ::mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) < 0) Close();
  }
  ~Netlink() { Close(); }
  Netlink(const Netlink&) = delete;
  Netlink& operator=(const Netlink&) = delete;

  // Asks for everything of a kind, and hands each answer on. False when the kernel does not answer.
  bool Dump(int type, int family, const std::function<void(const nlmsghdr*)>& take) {
    std::vector<char> request(kMessageSize);
    nlmsghdr* const header = ::mnl_nlmsg_put_header(request.data());
    header->nlmsg_type = static_cast<std::uint16_t>(type);
    header->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    auto* const question =
        static_cast<rtgenmsg*>(::mnl_nlmsg_put_extra_header(header, sizeof(rtgenmsg)));
    question->rtgen_family = static_cast<unsigned char>(family);
    return Exchange(header, take);
  }

  // Sends a message and waits for the kernel's answer. False for a refusal.
  bool Tell(std::string message, int type, int flags) {
    nlmsghdr* const header = HeaderOf(&message);
    header->nlmsg_type = static_cast<std::uint16_t>(type);
    header->nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | NLM_F_ACK | flags);
    return Exchange(header, [](const nlmsghdr*) {});
  }

 private:
  using Take = std::function<void(const nlmsghdr*)>;

  static int Handle(const nlmsghdr* header, void* take) {
    (*static_cast<const Take*>(take))(header);
    return MNL_CB_OK;
  }

  bool Exchange(nlmsghdr* header, const Take& take) {
    if (socket_ == nullptr) return false;
    header->nlmsg_seq = ++sequence_;
    header->nlmsg_pid = ::mnl_socket_get_portid(socket_);
    if (::mnl_socket_sendto(socket_, header, header->nlmsg_len) < 0) return false;
    std::vector<char> buffer(kBuffer);
    for (int more = MNL_CB_OK; more == MNL_CB_OK;) {
      const ssize_t length = ::mnl_socket_recvfrom(socket_, buffer.data(), buffer.size());
      if (length < 0) return false;
      more = ::mnl_cb_run(buffer.data(), static_cast<std::size_t>(length), sequence_,
                          ::mnl_socket_get_portid(socket_), Handle, const_cast<Take*>(&take));
      if (more < 0) return false;
    }
    return true;
  }

  void Close() {
    if (socket_ != nullptr) ::mnl_socket_close(std::exchange(socket_, nullptr));
  }

  static constexpr std::size_t kBuffer = 65536;  // the most that the kernel puts into one answer
  mnl_socket* socket_;
  unsigned sequence_ = 0;
};

}  // namespace change
