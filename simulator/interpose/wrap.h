#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <type_traits>

#include "interpose/path_table.h"

// How a wrapper is written: a function of the C library's name and type, which maps its path and
// calls on.
//
//     ORB_SIM_WRAPPER int unlink(const char* path) noexcept {
//       return callNext<"unlink", decltype(::unlink)>(mapped(path));
//     }

#define ORB_SIM_WRAPPER extern "C" __attribute__((visibility("default")))

static_assert(sizeof(void*) == 8,
              "the plain functions and their 64 variants are taken as the same");

namespace orb::sim {

template <std::size_t kSize>
struct SymbolName {
  consteval SymbolName(const char (&name)[kSize]) {
    for (std::size_t i = 0; i < kSize; ++i) {
      text[i] = name[i];
    }
  }
  char text[kSize]{};
};

/// The definition of a function that ours hides: that of a library loaded later, in the end the C
/// library's.
template <SymbolName kName, typename Function>
class Next {
 public:
  static Function* function() noexcept {
    Function* const found = found_.load(std::memory_order_relaxed);
    return found != nullptr ? found : lookUp();
  }

 private:
  static Function* lookUp() noexcept {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, kName.text));
  }

  // Filled when the program starts, because the look-up takes a lock that must not be needed after
  // a fork; a call that comes earlier finds null here.
  static inline std::atomic<Function*> found_{lookUp()};
};

/// Calls the function that ours hides. Where there is none, fails with ENOSYS.
template <SymbolName kName, typename Function, typename... Arguments>
auto callNext(Arguments... arguments) {
  Function* const next = Next<kName, Function>::function();
  using Result = decltype(next(arguments...));
  if (next == nullptr) {
    errno = ENOSYS;
    if constexpr (std::is_pointer_v<Result>) {
      return Result{nullptr};
    } else {
      return Result{-1};
    }
  }
  return next(arguments...);
}

}  // namespace orb::sim
