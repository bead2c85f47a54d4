// SPDX-License-Identifier: Apache-2.0
// What each thread keeps for itself, freed when it ends.
#pragma once

#include <memory>
#include <new>
#include <pthread.h>

namespace zarncore {

// A thread_local object with a destructor would end the process when there is no memory to note it;
// here its first use fails instead.
template <class Value>
class PerThread {
 public:
  PerThread() {
    if (::pthread_key_create(&key_, [](void* value) { delete static_cast<Value*>(value); }) != 0)
      throw std::bad_alloc();
  }
  PerThread(const PerThread&) = delete;
  PerThread& operator=(const PerThread&) = delete;

  // This thread's own, made on first use.
  [[nodiscard]] Value& Get() {
    if (void* const value = ::pthread_getspecific(key_)) return *static_cast<Value*>(value);
    auto value = std::make_unique<Value>();
    if (::pthread_setspecific(key_, value.get()) != 0) throw std::bad_alloc();
    return *value.release();
  }

 private:
  pthread_key_t key_{};
};

}  // namespace zarncore
