// The interface files: what groups of their keys mean.
#include "frame/model/ifcfg.h"

#include <ctime>

#include "frame/base/text.h"

namespace frame::model {

void SetFixedAddress(KeyEdit* edit, const char* ip, const char* netmask) {
  edit->Set(keys::kIpAddr, ip).Set(keys::kNetmask, netmask).Set(keys::kBootProto, kStatic);
}

void SetLeasedAddress(KeyEdit* edit) {
  edit->Set(keys::kBootProto, kDhcp).Drop(keys::kIpAddr).Drop(keys::kNetmask);
}

void LeaveBond(KeyEdit* edit) {
  edit->Drop(keys::kMaster).Drop(keys::kSlave);
}

void JoinBond(KeyEdit* edit, const char* bond) {
  edit->Set(keys::kUserCtl, "no").Set(keys::kMaster, bond).Set(keys::kSlave, "yes");
}

std::string ChangeSuffix() {
  return Format(".tmp%ld", static_cast<long>(std::time(nullptr)));
}

}  // namespace frame::model
