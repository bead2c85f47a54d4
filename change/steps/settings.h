// SPDX-License-Identifier: Apache-2.0
// /etc/zarnnet.conf: how long a change waits to be confirmed, and how much of old ones is kept.
#pragma once

namespace change {

struct KeepSettings {
  long changes;  // of at least so many
  long days;     // and of all that are not older
  long records;  // without contents: of at least so many changes
};
KeepSettings ReadKeepSettings();

long ConfirmSeconds();

}  // namespace change
