#include "program/serial_port.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <string>

#include "base/line_speed.h"
#include "program/failure.h"

namespace orb::sim {
namespace {

void setSpeed(termios& settings, unsigned int baud) {
  if (!setBaud(settings, baud)) {
    std::string known;
    for (const auto& speed : kLineSpeeds) {
      known += " " + std::to_string(speed.first);
    }
    throw Failure("--baud: " + std::to_string(baud) + " is none of" + known);
  }
}

}  // namespace

bool mayBeTerminal(const std::filesystem::path& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0 || !S_ISCHR(info.st_mode)) {
    return false;
  }
  // Opening and closing a pseudo-terminal could hang up the program at its other end.
  constexpr unsigned int kFirstPtyMajor = 136;
  constexpr unsigned int kLastPtyMajor = 143;
  // Opened, it would be a new terminal's far end.
  const dev_t pseudoTerminals = makedev(5, 2);
  if (info.st_rdev == pseudoTerminals) {
    return false;
  }
  const unsigned int kind = major(info.st_rdev);
  if (kind >= kFirstPtyMajor && kind <= kLastPtyMajor) {
    return true;
  }
  const OwnedDescriptor opened(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  return !opened.isOpen() || isatty(opened.get()) != 0;
}

OwnedDescriptor openSerialPort(const std::filesystem::path& device,
                               std::optional<unsigned int> baud) {
  OwnedDescriptor port(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), device);
  termios settings{};
  const int result = tcgetattr(port.get(), &settings);
  if (result != 0 && errno == ENOTTY) {
    throw Failure(device.string() + " is no serial port");
  }
  checked(result, device);
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | CSTOPB);
  if (baud) {
    setSpeed(settings, *baud);
  }
  checked(tcsetattr(port.get(), TCSANOW, &settings), device);
  tcflush(port.get(), TCIFLUSH);  // what was said before anybody listened
  return port;
}

// For writing alone, so that nobody takes this for another reader of the line.
OwnedDescriptor markUse(const std::filesystem::path& tty) {
  OwnedDescriptor opened(open(tty.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  struct flock mark {};
  mark.l_type = F_WRLCK;
  mark.l_whence = SEEK_SET;
  mark.l_start = off_t{1} << 32;  // apart from what is locked of a line that is offered
  mark.l_len = 1;
  struct flock found = mark;
  if (fcntl(opened.get(), F_GETLK, &found) == 0 && found.l_type != F_UNLCK) {
    std::cerr << "orb-sim: process " + std::to_string(found.l_pid) + " uses " + tty.string() +
                     " too: each takes replies of the other\n";
  }
  fcntl(opened.get(), F_SETLK, &mark);
  return opened;
}

}  // namespace orb::sim
