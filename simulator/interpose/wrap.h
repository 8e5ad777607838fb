#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <type_traits>

#include "interpose/path_table.h"

/// Begins a wrapper: a function of the C library's name and type.
#define ORB_SIM_WRAPPER extern "C" __attribute__((visibility("default")))

/// A whole wrapper that calls on with its path mapped: result, name, parameters, arguments to pass.
///
///     ORB_SIM_FORWARD(int, chmod, (const char* path, mode_t mode) noexcept, (mapped(path), mode))
#define ORB_SIM_FORWARD(Result, name, parameters, arguments)       \
  ORB_SIM_WRAPPER Result name parameters {                         \
    return orb::sim::callNext<#name, Result parameters> arguments; \
  }

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
Function* lookUp() noexcept {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, kName.text));
}

// Filled when the program starts, because the look-up takes a lock that must not be needed after
// a fork; a call that comes earlier finds null here.
template <SymbolName kName, typename Function>
inline std::atomic<Function*> lookedUp{lookUp<kName, Function>()};

/// Calls the function that ours hides. Where there is none, fails with ENOSYS.
template <SymbolName kName, typename Function, typename... Arguments>
auto callNext(Arguments... arguments) {
  Function* const known = lookedUp<kName, Function>.load(std::memory_order_relaxed);
  Function* const next = known != nullptr ? known : lookUp<kName, Function>();
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
