// Takes the place of the allocator of a test program and its libraries, to refuse memory.
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <new>

#include "fixture.h"

namespace {

thread_local long left = -1;
thread_local bool refuseAll = false;
thread_local bool refused = false;

bool Refuse() {
  if (left < 0 || left-- > 0) return false;
  if (refuseAll) left = 0;
  refused = true;
  errno = ENOMEM;
  return true;
}

}  // namespace

void test::RefuseMemory(long from, bool all) {
  refuseAll = all;
  refused = false;
  left = from;
}

bool test::StopRefusing() {
  left = -1;
  return refused;
}

#pragma GCC visibility push(default)
extern "C" {

// The C library's, and a sanitizer's where there is one.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
[[gnu::weak]] void* __interceptor_malloc(std::size_t size);
[[gnu::weak]] void* __interceptor_calloc(std::size_t count, std::size_t size);
[[gnu::weak]] void* __interceptor_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept {
  if (Refuse()) return nullptr;
  return __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  if (Refuse()) return nullptr;
  return __interceptor_calloc != nullptr ? __interceptor_calloc(count, size)
                                         : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
  if (Refuse()) return nullptr;
  return __interceptor_realloc != nullptr ? __interceptor_realloc(block, size)
                                          : __libc_realloc(block, size);
}

}  // extern "C"

// A sanitizer's own does not go through malloc().
void* operator new(std::size_t size) {
  using New = void* (*)(std::size_t);
  static const auto next =
      reinterpret_cast<New>(::dlsym(RTLD_NEXT, sizeof size == 8 ? "_Znwm" : "_Znwj"));
  if (Refuse()) throw std::bad_alloc();
  return next(size);
}
#pragma GCC visibility pop
