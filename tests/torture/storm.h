// Many callers at once.
#pragma once

#include <functional>
#include <string>

namespace torture {

// Processes and threads set, read and delete for some seconds; how many calls that was. Each owns
// one setting in files that all share: what it has written it must find again.
long Storm(int seconds, const std::function<void(const std::string&)>& fault);

}  // namespace torture
