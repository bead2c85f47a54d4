// Address settings on their way into an interface file.
#pragma once

#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/os/key_file.h"

namespace virtual_if {

// False when one of the two texts would add a line to the file.
bool IsFit(const ZARNNETIFSETTINGS& settings);

void SetAddress(const ZARNNETIFSETTINGS& settings, frame::KeyEdit* edit);

// Copies the file to FILE.saved, where it stays.
void KeepCopy(const std::string& path);

}  // namespace virtual_if
