#include "pty.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace orb::test {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kLimit = 10s;

int checked(int result, const char* call) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), call);
  }
  return result;
}

}  // namespace

Pty::Pty() : master_(checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt")) {
  checked(grantpt(master_), "grantpt");
  checked(unlockpt(master_), "unlockpt");
  char name[64];
  if (ptsname_r(master_, name, sizeof name) != 0) {
    throw std::runtime_error("ptsname_r");
  }
  path_ = name;
  tty_ = checked(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC), name);
  termios settings{};
  checked(tcgetattr(tty_, &settings), "tcgetattr");
  cfmakeraw(&settings);
  checked(tcsetattr(tty_, TCSANOW, &settings), "tcsetattr");
}

Pty::~Pty() {
  close(tty_);
  close(master_);
}

void Pty::feed(const Bytes& bytes) {
  const int expected = waiting() + static_cast<int>(bytes.size());
  send(bytes);
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (waiting() < expected) {
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("the pty did not pass the bytes on");
    }
    std::this_thread::sleep_for(20us);
  }
}

void Pty::send(const Bytes& bytes) {
  if (::write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    throw std::runtime_error("the pty did not take the bytes");
  }
}

int Pty::waiting() const {
  int count = 0;
  checked(ioctl(tty_, FIONREAD, &count), "FIONREAD");
  return count;
}

Bytes Pty::takeWritten(unsigned long count) {
  Bytes bytes(count);
  unsigned long taken = 0;
  while (taken < count) {
    pollfd far{master_, POLLIN, 0};
    if (checked(poll(&far, 1, static_cast<int>(kLimit.count())), "poll") == 0) {
      throw std::runtime_error("less was written than expected");
    }
    taken += static_cast<unsigned long>(
        checked(static_cast<int>(::read(master_, bytes.data() + taken, count - taken)), "read"));
  }
  return bytes;
}

bool Pty::hasWritten() const {
  pollfd far{master_, POLLIN, 0};
  return checked(poll(&far, 1, 0), "poll") > 0;
}

}  // namespace orb::test
