// SPDX-License-Identifier: Apache-2.0
// The rehearsal is a program of its own beside the library: a process with other threads cannot
// enter namespaces, and nothing of the caller's shall be in the copy. It gets the wish on its
// standard input and answers on its standard output.
#include "rehearsal/rehearsal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include "record/programs.h"
#include "record/secrets.h"
#include "record/spawn_attributes.h"
#include "record/store.h"
#include "rehearsal/inputs.h"

namespace change {
namespace {

constexpr char kProgram[] = "zarnnet-rehearsal";
constexpr int kLongestMilliseconds = 120000;

// Our end of a line to a child whose standard input and output are the other end.
class Child {
 public:
  explicit Child(const std::string& path) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    line_ = ends[0];
    Start(path, ends[1]);
    ::close(ends[1]);
  }
  ~Child() {
    if (line_ >= 0) ::close(line_);
    if (pid_ <= 0) return;
    ::kill(pid_, answered_ ? SIGTERM : SIGKILL);
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  [[nodiscard]] bool IsStarted() const { return pid_ > 0; }

  bool Send(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
      const ssize_t sent = ::send(line_, text.data() + at, text.size() - at, MSG_NOSIGNAL);
      if (sent < 0 && errno == EINTR) continue;  // by a handler of the caller's
      if (sent <= 0) return false;
      at += static_cast<std::size_t>(sent);
    }
    return ::shutdown(line_, SHUT_WR) == 0;
  }

  // All that it says. It stays until it is killed, and its copy with it.
  std::string Answer() {
    std::string answer;
    std::array<char, 16384> block{};
    pollfd ready{line_, POLLIN, 0};
    for (;;) {
      const int count = ::poll(&ready, 1, kLongestMilliseconds);
      if (count < 0 && errno == EINTR) continue;
      if (count != 1) break;
      const ssize_t length = ::recv(line_, block.data(), block.size(), 0);
      if (length < 0 && errno == EINTR) continue;
      answered_ = length <= 0;
      if (answered_) break;
      answer.append(block.data(), static_cast<std::size_t>(length));
    }
    return answer;
  }

 private:
  void Start(const std::string& path, int end) {
    posix_spawn_file_actions_t actions;
    const SpawnAttributes attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, end, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, end, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    const char* const argv[] = {path.c_str(), nullptr};
    if (::posix_spawn(&pid_, path.c_str(), &actions, attributes.Get(), const_cast<char**>(argv),
                      environ) != 0)
      pid_ = -1;
    ::posix_spawn_file_actions_destroy(&actions);
  }

  int line_ = -1;
  pid_t pid_ = -1;
  bool answered_ = false;
};

Json Failed(const std::string& reason) {
  return {{"result", ZARNNETCHANGE_FAILED}, {"reason", reason}};
}

// Done while the copy is there: the kernel takes a copy's network away one interface after the
// other, and tells nothing of any network meanwhile.
using WhileThere = std::function<void()>;

Json Rehearsed(const Json& request, const WhileThere& look) {
  const std::string path = OwnProgram(kProgram);
  if (path.empty())
    return Failed(std::string("the program ") + kProgram + " is not beside the library");
  Child child(path);
  if (!child.IsStarted()) return Failed(path + " cannot be started: " + std::strerror(errno));
  const bool sent = child.Send(request.dump());
  Json answer = Json::parse(child.Answer(), nullptr, false);
  if (!sent || !answer.is_object() || !answer.contains("result"))
    return Failed("the rehearsal has not come to its end");
  look();
  return answer;
}

}  // namespace

Json Plan(const Json& wish, const Options& options) {
  Json request = PlannedOptions(options);
  request["probe"] = options.probe;
  request["number"] = options.number;
  Json plan{{"plan", 1}, {"options", PlannedOptions(options)}, {"inputs", InputsNow()}};
  if (!wish.is_null()) plan["wish"] = WishWithoutSecrets(wish);
  if (!options.calls.is_null()) plan["calls"] = options.calls;
  Json inputsAfter = plan["inputs"];
  plan.update(Rehearsed({{"wish", wish}, {"options", request}, {"calls", options.calls}},
                        [&] { inputsAfter = InputsNow(); }));
  plan.erase("refusal");
  const bool tried = plan["result"] == ZARNNETCHANGE_REFUSED || !Member(plan, "steps").empty();
  if (tried && options.calls.is_null()) plan["record"] = store::kFolder;
  // Whatever changed while it was rehearsed would make another plan.
  if (plan["inputs"] != inputsAfter)
    plan.update(Failed("the machine's network changed while the change was rehearsed: try again"));
  return plan;
}

ServersAnswer AskDhcpServer(const Change& change) {
  Json options = PlannedOptions(change.options);
  options["below"] = "/dhcp_server";
  const Json answer = Rehearsed({{"wish", change.wish}, {"options", options}}, [] {});
  if (answer["result"] == ZARNNETCHANGE_FAILED) return {{}, TextOf(answer["reason"])};
  return {TextOf(Member(answer, "refusal")), {}};
}

}  // namespace change
