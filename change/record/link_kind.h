// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <libmnl/libmnl.h>
#include <string>

namespace change {

// The attributes that make a link of this kind with the settings that the kernel told of one, null
// for none: what the kernel tells is not all that it takes.
std::string KindToMake(const std::string& kind, const nlattr* told);

}  // namespace change
