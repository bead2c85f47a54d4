// SPDX-License-Identifier: Apache-2.0
// What a test puts in the kernel's place, by taking the place of the C library's ioctl.
#include "support/kernel_answers.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <linux/ethtool.h>
#include <linux/if_vlan.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace test {
namespace {

// False for a VLAN that the test has not put there.
bool AnswerVlan(vlan_ioctl_args* request) {
  const std::string name = request->device1;
  const auto vlan = Kernel().vlanParents.find(name);
  const bool waits = name == Kernel().vlanNeedsFile && !FileExists(IfcfgPath(name));
  if (vlan == Kernel().vlanParents.end() || waits) return false;
  if (request->cmd == GET_VLAN_VID_CMD) {
    request->u.VID = std::atoi(name.c_str() + name.find('.') + 1);
  } else {
    std::snprintf(request->u.device2, sizeof request->u.device2, "%s", vlan->second.c_str());
  }
  return true;
}

int AnswerDriver(const PoorDriver& driver, void* request) {
  if (*static_cast<__u32*>(request) != ETHTOOL_GSET || !driver.speed) {
    errno = EOPNOTSUPP;
    return -1;
  }
  auto* const settings = static_cast<ethtool_cmd*>(request);
  ethtool_cmd_speed_set(settings, *driver.speed);
  settings->duplex = driver.duplex;
  settings->autoneg = driver.autoneg;
  return 0;
}

void Note(unsigned long command, const ifreq& request) {
  const std::string name = request.ifr_name;
  const bool up = (request.ifr_flags & IFF_UP) != 0;
  const auto note = [](const std::string& change) { Journal("kernel " + change); };
  if (command == SIOCSIFNAME) note(name + " is now " + request.ifr_newname);
  if (command == SIOCSIFFLAGS) note(name + (up ? " up" : " down"));
  if (command == SIOCSIFMTU) note(name + " " + std::to_string(request.ifr_mtu));
}

}  // namespace

KernelAnswers& Kernel() {
  static KernelAnswers answers;
  return answers;
}

}  // namespace test

extern "C" int ioctl(int fd, unsigned long command, ...) noexcept {
  va_list args;
  va_start(args, command);
  void* const argument = va_arg(args, void*);
  va_end(args);
  if (command == SIOCGIFVLAN && test::AnswerVlan(static_cast<vlan_ioctl_args*>(argument))) return 0;
  auto* const request = static_cast<ifreq*>(argument);
  if (command == SIOCETHTOOL && test::Kernel().driver) {
    return test::AnswerDriver(*test::Kernel().driver, request->ifr_data);
  }
  if (command == SIOCSIFNAME && test::Kernel().refuseRename) {
    errno = EBUSY;
    return -1;
  }
  if (command == SIOCSIFFLAGS || command == SIOCSIFMTU || command == SIOCSIFNAME)
    test::Note(command, *request);
  return static_cast<int>(::syscall(SYS_ioctl, fd, command, argument));
}
