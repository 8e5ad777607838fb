#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

#include <string>

#include "base/owned_descriptor.h"

namespace orb {

/// A pty whose tty is raw. Programs that are started do not inherit it.
struct RawPty {
  /// `flags` of its far end besides, such as O_NONBLOCK. Throws std::system_error where the system
  /// has none.
  explicit RawPty(int flags = 0)
      : master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | flags), "posix_openpt") {
    checked(::grantpt(master.get()), "grantpt");
    checked(::unlockpt(master.get()), "unlockpt");
    char name[64];
    checked(-::ptsname_r(master.get(), name, sizeof name), "ptsname_r");
    path = name;
    tty = OwnedDescriptor(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC), path);
    termios settings{};
    checked(::tcgetattr(tty.get(), &settings), "tcgetattr");
    ::cfmakeraw(&settings);
    checked(::tcsetattr(tty.get(), TCSANOW, &settings), "tcsetattr");
  }

  OwnedDescriptor master;  ///< the far end
  OwnedDescriptor tty;     ///< held, so that the pty outlives what others open of it
  std::string path;        ///< of the tty
};

}  // namespace orb
