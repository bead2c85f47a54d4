// SPDX-License-Identifier: Apache-2.0
// Where exceptions end: at the edge of the C interface, and before a step that must be done anyway.
#pragma once

#include <type_traits>

#include "frame/base/error.h"

namespace frame {

// Runs the work and answers its result. What the standard library throws here is memory that could
// not be had: `noMemory` logs it, the code says so, and the answer is `failure`. For work behind
// which something has to be done whatever happens in it, such as a start after a stop.
template <class Failure, class Work, class NoMemory>
requires std::is_invocable_v<NoMemory>
auto NoThrow(Failure failure, const Work& work, const NoMemory& noMemory,
             const Place& at = {}) noexcept {
  try {
    return work();
  } catch (...) {
    noMemory();
    return Fail(ZARNNETERR_NO_MEMORY, static_cast<decltype(work())>(failure), at);
  }
}

template <class Failure, class Work>
auto NoThrow(Failure failure, const Work& work, const Place& at = {}) noexcept {
  return NoThrow(
      failure, work, [] {}, at);
}

// Every exported function is one call of this, and nothing else is: it runs the body as NoThrow()
// does. A body that logs in the function form takes the Place, since its own name is that of a
// lambda.
template <class Failure, class Body, class NoMemory>
requires std::is_invocable_v<NoMemory>
auto Boundary(Failure failure, const Body& body, const NoMemory& noMemory,
              const Place& at = {}) noexcept {
  const auto run = [&] {
    if constexpr (std::is_invocable_v<Body, const Place&>) {
      return body(at);
    } else {
      return body();
    }
  };
  return NoThrow(failure, run, noMemory, at);
}

template <class Failure, class Body>
auto Boundary(Failure failure, const Body& body, const Place& at = {}) noexcept {
  return Boundary(
      failure, body, [] {}, at);
}

// For functions that answer nothing, such as those that free.
template <class Body>
void Boundary(const Body& body) noexcept {
  try {
    body();
  } catch (...) {
    SetError(ZARNNETERR_NO_MEMORY);
  }
}

}  // namespace frame
