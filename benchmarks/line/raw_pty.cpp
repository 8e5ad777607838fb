#include "line/raw_pty.h"

#include <fcntl.h>
#include <pty.h>
#include <termios.h>

#include <cerrno>
#include <system_error>

namespace orb::bench {

RawPty::RawPty() {
  termios raw{};
  cfmakeraw(&raw);
  cfsetspeed(&raw, B115200);
  int farEnd = -1;
  int nearEnd = -1;
  char name[64];
  if (openpty(&farEnd, &nearEnd, name, &raw, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "openpty");
  }
  master = {farEnd, "the pty's master"};
  slave = {nearEnd, "the pty's slave"};
  tty = name;
  fcntl(farEnd, F_SETFL, O_NONBLOCK);
}

}  // namespace orb::bench
