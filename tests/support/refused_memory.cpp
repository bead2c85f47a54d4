// SPDX-License-Identifier: Apache-2.0
// Takes the place of the allocator of a test program and its libraries, to refuse memory.
#include "support/refused_memory.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <utility>

namespace {

thread_local long left = -1;
thread_local bool refuseAll = false;
thread_local bool refused = false;

[[maybe_unused]] bool Refuse() {
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

test::MemoryForTheTest::MemoryForTheTest() : left_(std::exchange(left, -1)) {}

test::MemoryForTheTest::~MemoryForTheTest() {
  left = left_;
}

#ifndef __SANITIZE_THREAD__  // whose allocator is called before it is ready to be

// A sanitizer's own, or the C library's.
#define NEXT(name, ...) \
  (__interceptor_##name != nullptr ? __interceptor_##name : __libc_##name)(__VA_ARGS__)

#pragma GCC visibility push(default)
extern "C" {

[[gnu::weak]] decltype(::malloc) __interceptor_malloc;
[[gnu::weak]] decltype(::calloc) __interceptor_calloc;
[[gnu::weak]] decltype(::realloc) __interceptor_realloc;
decltype(::malloc) __libc_malloc;
decltype(::calloc) __libc_calloc;
decltype(::realloc) __libc_realloc;

void* malloc(std::size_t size) noexcept {
  return Refuse() ? nullptr : NEXT(malloc, size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  return Refuse() ? nullptr : NEXT(calloc, count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
  return Refuse() ? nullptr : NEXT(realloc, block, size);
}

}  // extern "C"

// A sanitizer's does not go through malloc().
void* operator new(std::size_t size) {
  static const auto next = reinterpret_cast<void* (*)(std::size_t)>(
      ::dlsym(RTLD_NEXT, sizeof size == 8 ? "_Znwm" : "_Znwj"));
  if (Refuse()) throw std::bad_alloc();
  return next(size);
}
#pragma GCC visibility pop
#endif
