#include "limits/bare_loop.h"

#include <fcntl.h>
#include <sched.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>

namespace orb::bench {

bool exchangeByBareLoop(const std::string& tty, const Bytes& query, const Bytes& answer) {
  const int fd = open(tty.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_SYNC);
  fcntl(fd, F_SETFD, FD_CLOEXEC);
  termios settings;
  tcgetattr(fd, &settings);
  cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | CSTOPB);
  tcflush(fd, TCIOFLUSH);
  tcsetattr(fd, TCSANOW, &settings);
  ssize_t written = write(fd, query.data(), query.size());
  fsync(fd);
  unsigned char reply[1024];
  unsigned long received = 0;
  while (written > 0 && received < answer.size()) {
    const ssize_t count = read(fd, reply + received, sizeof reply - received);
    received += count > 0 ? static_cast<unsigned long>(count) : 0;
    if (count <= 0) {
      sched_yield();
    }
  }
  close(fd);
  return written > 0 && std::equal(answer.begin(), answer.end(), reply);
}

}  // namespace orb::bench
