#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "base/owned_descriptor.h"

namespace orb {

/// The descriptor, or a copy of it that is above `highest`: where a program has closed its standard
/// descriptors, others get their numbers, and what is printed would go there. One that is not open
/// stays so.
inline OwnedDescriptor above(int highest, OwnedDescriptor descriptor) {
  if (!descriptor.isOpen() || descriptor.get() > highest) {
    return descriptor;
  }
  return OwnedDescriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, highest + 1), "fcntl");
}

inline OwnedDescriptor aboveStandard(OwnedDescriptor descriptor) {
  return above(STDERR_FILENO, std::move(descriptor));
}

}  // namespace orb
