#pragma once

#include <fcntl.h>

#include <array>

#include "base/owned_descriptor.h"

namespace orb {

/// Both ends of a pipe, closed in programs that this one starts. Throws std::system_error where
/// there is none to be had.
struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    checked(::pipe2(ends.data(), O_CLOEXEC), "pipe2");
    reading = OwnedDescriptor(ends[0]);
    writing = OwnedDescriptor(ends[1]);
  }

  OwnedDescriptor reading;
  OwnedDescriptor writing;
};

}  // namespace orb
