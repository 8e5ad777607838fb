// Asks a receiver for its masks, by the library and by a bare loop in turns, between marks that a
// trace of system calls shows.

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "marks.h"
#include "orb-gnss/module_driver.h"
#include "support/pty.h"
#include "support/replacement.h"

namespace {

constexpr unsigned char kMasks[] = {0xA0, 0xA1, 0x00, 0x04, 0xB0, 0x01,
                                    0x05, 0x14, 0xA0, 0x0D, 0x0A};
constexpr unsigned char kQueryMasks[] = {0xA0, 0xA1, 0x00, 0x01, 0x2F, 0x2F, 0x0D, 0x0A};
constexpr unsigned char kCnr = kMasks[7];

const char* tty = nullptr;

void answerQueries(orb::test::Pty& pty) {
  const orb::test::Bytes masks(kMasks, kMasks + sizeof kMasks);
  for (int queries = 2 * orb::test::kTracedTurns; queries > 0; --queries) {
    pty.takeWritten(sizeof kQueryMasks);
    pty.send(masks);
  }
}

void mark(const char* text) {
  if (write(orb::test::kMarkDescriptor, text, 1) >= 0) {
    throw std::logic_error("the descriptor of the marks is open");
  }
}

}  // namespace

// The library opens its device through this. It leads to the pty, and makes no further system call.
ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  const bool isDevice = std::strcmp(path, "/dev/tty_gps") == 0;
  return openat(AT_FDCWD, isDevice ? tty : path, flags);
}

// What fortified headers make of an open() without a mode for clang, from glibc 2.40 on.
ORB_TEST_REPLACEMENT int __open_2(const char* path, int flags) { return open(path, flags); }

namespace {

bool isAnsweredToDriver(orbController_QN4470T01& driver) {
  unsigned int mode = 0;
  unsigned int elevation = 0;
  unsigned int cnr = 0;
  return driver.gpsOrbGetElevConfigure(mode, elevation, cnr) == 0 && cnr == kCnr;
}

bool isAnsweredToLoop() {
  const int device = open("/dev/tty_gps", O_RDWR | O_NOCTTY | O_NONBLOCK | O_SYNC);
  fcntl(device, F_SETFD, FD_CLOEXEC);
  termios settings{};
  tcgetattr(device, &settings);
  cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | CSTOPB);
  tcflush(device, TCIOFLUSH);
  tcsetattr(device, TCSANOW, &settings);
  const bool isSent = write(device, kQueryMasks, sizeof kQueryMasks) == sizeof kQueryMasks;
  fsync(device);
  unsigned char reply[1024];
  ssize_t count = -1;
  while (isSent && count < 0) {
    count = read(device, reply, sizeof reply);
  }
  close(device);
  return count == sizeof kMasks && reply[7] == kCnr;
}

void expectAnswer(const char* asker, bool isAnswered) {
  if (!isAnswered) {
    std::fprintf(stderr, "%s was not answered\n", asker);
    std::_Exit(1);
  }
}

}  // namespace

int main() {
  orb::test::Pty pty;
  tty = pty.path().c_str();
  std::thread receiver([&pty] { answerQueries(pty); });

  orbController_QN4470T01 driver;
  for (int turn = 0; turn < orb::test::kTracedTurns; ++turn) {
    mark("<");
    const bool isDriverAnswered = isAnsweredToDriver(driver);
    mark(">");
    expectAnswer("the driver", isDriverAnswered);
    mark("<");
    const bool isLoopAnswered = isAnsweredToLoop();
    mark(">");
    expectAnswer("the bare loop", isLoopAnswered);
  }
  receiver.join();
  return 0;
}
