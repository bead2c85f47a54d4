// The edge of the C interface, which no exception crosses.
#pragma once

#include <type_traits>

#include "frame/base/error.h"

namespace frame {

// Every exported function is one call of this: it runs the body and answers its result. What the
// standard library throws here is memory that could not be had: `noMemory` logs it, the code says
// so, and the answer is `failure`. A body that logs in the function form takes the Place, since its
// own name is that of a lambda.
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
  try {
    return run();
  } catch (...) {
    noMemory();
    return Fail(ZARNNETERR_NO_MEMORY, static_cast<decltype(run())>(failure), at);
  }
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
