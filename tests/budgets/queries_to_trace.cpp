// Asks a receiver for its masks, by the library and by a bare loop in turns, between marks that a
// trace of system calls shows.

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "marks.h"
#include "orb-gnss/module_driver.h"

namespace {

constexpr unsigned char kMasks[] = {0xA0, 0xA1, 0x00, 0x04, 0xB0, 0x01,
                                    0x05, 0x14, 0xA0, 0x0D, 0x0A};
constexpr unsigned char kQueryMasks[] = {0xA0, 0xA1, 0x00, 0x01, 0x2F, 0x2F, 0x0D, 0x0A};
constexpr unsigned char kCnr = kMasks[7];

char tty[64];

// Until nobody has the tty open any more.
void answerQueries(int line) {
  unsigned char query[64];
  unsigned long received = 0;
  for (;;) {
    const ssize_t count = read(line, query, sizeof query);
    if (count < 0) {
      return;
    }
    received += static_cast<unsigned long>(count);
    if (received == sizeof kQueryMasks) {
      received = 0;
      if (write(line, kMasks, sizeof kMasks) < 0) {
        return;
      }
    }
  }
}

void mark(const char* text) {
  if (write(orb::test::kMarkDescriptor, text, 1) >= 0) {
    throw std::logic_error("the descriptor of the marks is open");
  }
}

}  // namespace

// The library opens its device through this, by way of the dynamic linker, which finds a program's
// own definitions first. It leads to the pty, and makes no further system call.
extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
  const bool isDevice = std::strcmp(path, "/dev/tty_gps") == 0;
  return openat(AT_FDCWD, isDevice ? tty : path, flags);
}

namespace {

bool isAnsweredToDriver(orbController_QN4470T01& driver) {
  unsigned int mode = 0;
  unsigned int elevation = 0;
  unsigned int cnr = 0;
  return driver.gpsOrbGetElevConfigure(mode, elevation, cnr) == 0 && cnr == kCnr;
}

bool isAnsweredToLoop() {
  const int device = open("/dev/tty_gps", O_RDWR | O_NOCTTY | O_NONBLOCK | O_SYNC);
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
  termios raw{};
  cfmakeraw(&raw);
  int line = -1;
  int held = -1;
  if (openpty(&line, &held, tty, &raw, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "openpty");
  }
  std::thread receiver([line] { answerQueries(line); });

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
  close(held);
  receiver.join();
  return 0;
}
