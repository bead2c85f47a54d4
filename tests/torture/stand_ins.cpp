// What stands in for the C library and the kernel: sleeps are short, log lines are put together and
// thrown away, and a VLAN is what has a file in /run/vlans.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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
  char path[64];
  std::snprintf(path, sizeof path, "/run/vlans/%.23s", request->device1);
  if (::access(path, F_OK) != 0) return -1;
  char* const dot = std::strchr(request->device1, '.');
  if (request->cmd == GET_VLAN_VID_CMD) {
    request->u.VID = dot != nullptr ? std::atoi(dot + 1) : 0;
  } else {
    std::snprintf(request->u.device2, sizeof request->u.device2, "%.*s",
                  dot != nullptr ? static_cast<int>(dot - request->device1) : 0, request->device1);
  }
  return 0;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

unsigned sleep(unsigned) {
  ::poll(nullptr, 0, 2);
  return 0;
}
int usleep(useconds_t time) {
  ::poll(nullptr, 0, time > 2000 ? 2 : 1);
  return 0;
}
void syslog(int, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Log(format, args);
  va_end(args);
}
void __syslog_chk(int, int, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Log(format, args);
  va_end(args);
}
int ioctl(int fd, unsigned long command, ...) noexcept {
  va_list args;
  va_start(args, command);
  void* const argument = va_arg(args, void*);
  va_end(args);
  if (command == SIOCGIFVLAN) return AnswerVlan(static_cast<vlan_ioctl_args*>(argument));
  return static_cast<int>(::syscall(SYS_ioctl, fd, command, argument));
}

}  // extern "C"
#pragma GCC visibility pop
