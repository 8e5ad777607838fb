#include "simulated_line.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <stdexcept>

namespace orb::test {

namespace {

constexpr int kDescriptor = 999;          // never open
constexpr std::time_t kNow = 1710511407;  // any time does
constexpr int kTooManyLooks = 5000;

constexpr unsigned char kMasks[] = {0xA0, 0xA1, 0x00, 0x04, 0xB0, 0x01, 0x05, kSimulatedCnrMask,
                                    0xA0, 0x0D, 0x0A};
constexpr unsigned long kFirstPiece = 5;

struct Line {
  int emptyLooksNeeded = 0;
  std::chrono::nanoseconds sleepNeeded{0};

  int emptyLooks = 0;
  std::chrono::nanoseconds slept{0};
  unsigned long given = sizeof kMasks;  // nothing to give before a query
} line;

void takeQuery() {
  line.emptyLooks = 0;
  line.slept = {};
  line.given = 0;
}

ssize_t look(void* buffer, size_t size) {
  const bool isAnswering =
      line.emptyLooks >= line.emptyLooksNeeded && line.slept >= line.sleepNeeded;
  if (!isAnswering || line.given == sizeof kMasks) {
    if (++line.emptyLooks > kTooManyLooks) {
      throw std::runtime_error("the wait for a reply spins, or waits for what was not asked");
    }
    errno = EAGAIN;
    return -1;
  }
  const unsigned long end = line.given < kFirstPiece ? kFirstPiece : sizeof kMasks;
  const unsigned long count = std::min(size, end - line.given);
  std::memcpy(buffer, kMasks + line.given, count);
  line.given += count;
  return static_cast<ssize_t>(count);
}

}  // namespace

void delayReplies(int emptyLooks, std::chrono::nanoseconds slept) {
  line.emptyLooksNeeded = emptyLooks;
  line.sleepNeeded = slept;
}

}  // namespace orb::test

// The library calls these through the dynamic linker, which finds a program's own definitions
// first. What does not concern the line goes to the kernel.

#define ORB_TEST_REPLACEMENT extern "C" __attribute__((visibility("default")))

using orb::test::kDescriptor;

ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  const bool isDevice = std::strcmp(path, "/dev/tty_gps") == 0;
  return isDevice ? kDescriptor : openat(AT_FDCWD, path, flags);
}

ORB_TEST_REPLACEMENT int close(int file) {
  return file == kDescriptor ? 0 : static_cast<int>(syscall(SYS_close, file));
}

ORB_TEST_REPLACEMENT int tcgetattr(int, termios* settings) noexcept {
  *settings = {};
  return 0;
}

ORB_TEST_REPLACEMENT int tcsetattr(int, int, const termios*) noexcept { return 0; }

ORB_TEST_REPLACEMENT int tcflush(int, int) noexcept { return 0; }

ORB_TEST_REPLACEMENT ssize_t write(int file, const void* bytes, size_t size) {
  if (file != kDescriptor) {
    return syscall(SYS_write, file, bytes, size);
  }
  orb::test::takeQuery();
  return static_cast<ssize_t>(size);
}

ORB_TEST_REPLACEMENT int fsync(int) { return 0; }

ORB_TEST_REPLACEMENT ssize_t read(int file, void* buffer, size_t size) {
  return file == kDescriptor ? orb::test::look(buffer, size)
                             : syscall(SYS_read, file, buffer, size);
}

ORB_TEST_REPLACEMENT int sched_yield() noexcept { return 0; }

ORB_TEST_REPLACEMENT int clock_nanosleep(clockid_t, int, const timespec* time, timespec*) {
  orb::test::line.slept +=
      std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec);
  return 0;
}

ORB_TEST_REPLACEMENT std::time_t time(std::time_t*) noexcept { return orb::test::kNow; }
