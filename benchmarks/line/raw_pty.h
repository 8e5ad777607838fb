#pragma once

#include <fcntl.h>
#include <pty.h>
#include <termios.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "base/owned_descriptor.h"

namespace orb::bench {

/// A pty whose tty is raw. Reads and writes at its far end do not wait.
struct RawPty {
  /// Throws std::system_error where the system has none.
  RawPty() {
    termios raw{};
    cfmakeraw(&raw);
    cfsetspeed(&raw, B115200);
    int ends[2];
    char name[64];
    if (openpty(&ends[0], &ends[1], name, &raw, nullptr) != 0) {
      throw std::system_error(errno, std::generic_category(), "openpty");
    }
    master = {ends[0], "the pty's master"};
    slave = {ends[1], "the pty's slave"};
    tty = name;
    fcntl(master.get(), F_SETFL, O_NONBLOCK);
  }

  OwnedDescriptor master;
  OwnedDescriptor slave;  ///< held, so that the pty outlives the near end's descriptors
  std::string tty;        ///< the device to open
};

}  // namespace orb::bench
