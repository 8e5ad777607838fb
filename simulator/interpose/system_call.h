#pragma once

#include <unistd.h>

#include "interpose/wrap.h"

namespace orb::sim {

/// Makes a system call that no wrapper sees and at which no thread is cancelled.
template <typename... Arguments>
long systemCall(long number, Arguments... arguments) noexcept {
  return callNext<"syscall", decltype(::syscall)>(number, arguments...);
}

}  // namespace orb::sim
