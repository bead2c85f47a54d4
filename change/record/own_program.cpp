// SPDX-License-Identifier: Apache-2.0
// The programs of this library, beside it in the build's tree, else where the installation has
// them, wherever that was moved to.
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <memory>
#include <sys/auxv.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include "record/programs.h"

namespace change {
namespace {

std::string Folder(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

// The file with this code in it: the library, or the program that it is linked into. The name by
// which a program was started may be anything; the kernel knows which it is.
std::string OwnFile() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&ZARNNetChangeApply), &info) == 0) return {};
  const auto header = reinterpret_cast<std::uintptr_t>(info.dli_fbase) + sizeof(ElfW(Ehdr));
  const bool program = header == ::getauxval(AT_PHDR);
  const std::unique_ptr<char, void (*)(void*)> real(
      ::realpath(program ? "/proc/self/exe" : info.dli_fname, nullptr), std::free);
  return real != nullptr ? real.get() : "";
}

}  // namespace

std::string OwnProgram(const std::string& name) {
  const std::string folder = Folder(OwnFile());
  for (const char* way : {"/", ZARNNET_LIB_TO_LIBEXEC, ZARNNET_BIN_TO_LIBEXEC}) {
    std::string path = folder + way + name;
    if (::access(path.c_str(), X_OK) == 0) return path;
  }
  return {};
}

}  // namespace change
