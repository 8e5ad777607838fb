// Asks a receiver for its masks, by the library and by a bare loop in turns, between marks that a
// trace of system calls shows.

#include <dlfcn.h>
#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
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

// What a first query alone does, such as asking the system for memory, is no part of the cost.
constexpr int kTurns = 3;
constexpr int kQueries = 2 * kTurns;

void answerQueries(int line) {
  unsigned char query[64];
  unsigned long received = 0;
  for (int answered = 0; answered < kQueries;) {
    const ssize_t count = read(line, query, sizeof query);
    if (count < 0) {
      return;
    }
    received += static_cast<unsigned long>(count);
    if (received == sizeof kQueryMasks) {
      received = 0;
      ++answered;
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

// The library opens its device through the first of these and its log through the second, by way
// of the dynamic linker, which finds a program's own definitions first. They lead to the pty and to
// nowhere, and make no further system call.

#define ORB_TEST_REPLACEMENT extern "C" __attribute__((visibility("default")))

ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  const bool isDevice = std::strcmp(path, "/dev/tty_gps") == 0;
  return openat(AT_FDCWD, isDevice ? tty : path, flags);
}

ORB_TEST_REPLACEMENT FILE* fopen64(const char* path, const char* mode) {
  static auto* const real = reinterpret_cast<decltype(&::fopen64)>(dlsym(RTLD_NEXT, "fopen64"));
  return real(std::strncmp(path, "/var/log/", 9) == 0 ? "/dev/null" : path, mode);
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
  bool areAnswered = true;
  for (int turn = 0; turn < kTurns; ++turn) {
    mark("<");
    areAnswered &= isAnsweredToDriver(driver);
    mark(">");
    mark("<");
    areAnswered &= isAnsweredToLoop();
    mark(">");
  }
  if (!areAnswered) {
    return 1;
  }
  receiver.join();
  return 0;
}
