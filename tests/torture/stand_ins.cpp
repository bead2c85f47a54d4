// SPDX-License-Identifier: Apache-2.0
// What stands in for the C library and the kernel: sleeps are short, log lines are put together and
// thrown away, and a VLAN is what has a file in /run/vlans.
#include <cstdarg>
#include <cstdio>
#include <linux/if_vlan.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

namespace {

void Log(const char* format, va_list args) {
  char text[8192];
  std::vsnprintf(text, sizeof text, format, args);
}

int AnswerVlan(vlan_ioctl_args* request) {
  char path[64], parent[24] = "";
  int id = 0;
  std::snprintf(path, sizeof path, "/run/vlans/%.23s", request->device1);
  if (::access(path, F_OK) != 0) return -1;
  std::sscanf(request->device1, "%23[^.].%d", parent, &id);
  if (request->cmd == GET_VLAN_VID_CMD) {
    request->u.VID = id;
  } else {
    std::snprintf(request->u.device2, sizeof request->u.device2, "%s", id != 0 ? parent : "");
  }
  return 0;
}

}  // namespace

#define WITH_ARGUMENTS(last, ...) \
  va_list args;                   \
  va_start(args, last);           \
  __VA_ARGS__;                    \
  va_end(args)

#pragma GCC visibility push(default)
extern "C" {

unsigned sleep(unsigned) {
  return static_cast<unsigned>(::poll(nullptr, 0, 2));
}
int usleep(useconds_t time) {
  return ::poll(nullptr, 0, time > 2000 ? 2 : 1);
}
void syslog(int, const char* format, ...) {
  WITH_ARGUMENTS(format, Log(format, args));
}
void __syslog_chk(int, int, const char* format, ...) {
  WITH_ARGUMENTS(format, Log(format, args));
}
int ioctl(int fd, unsigned long command, ...) noexcept {
  WITH_ARGUMENTS(command, void* const argument = va_arg(args, void*));
  if (command == SIOCGIFVLAN) return AnswerVlan(static_cast<vlan_ioctl_args*>(argument));
  return static_cast<int>(::syscall(SYS_ioctl, fd, command, argument));
}

}  // extern "C"
#pragma GCC visibility pop
