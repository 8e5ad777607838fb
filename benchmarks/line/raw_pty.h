#pragma once

#include <string>

#include "base/owned_descriptor.h"

namespace orb::bench {

/// A pty whose tty is raw. Reads and writes at its far end do not wait.
struct RawPty {
  /// Throws std::system_error where the system gives none.
  RawPty();

  OwnedDescriptor master;
  OwnedDescriptor slave;  ///< held, so that the pty outlives the near end's descriptors
  std::string tty;        ///< the device to open
};

}  // namespace orb::bench
