#include "support/pty.h"

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace orb::test {

namespace {

constexpr std::chrono::seconds kLimit{10};

bool hasInput(int descriptor, std::chrono::milliseconds limit) {
  pollfd polled{descriptor, POLLIN, 0};
  return checked(poll(&polled, 1, static_cast<int>(limit.count())), "poll") > 0;
}

}  // namespace

Pty::Pty() {
  termios raw{};
  cfmakeraw(&raw);
  int farEnd = -1;
  int tty = -1;
  char name[64];
  checked(openpty(&farEnd, &tty, name, &raw, nullptr), "openpty");
  farEnd_ = OwnedDescriptor(farEnd);
  tty_ = OwnedDescriptor(tty);
  path_ = name;
}

void Pty::feed(const Bytes& bytes) {
  const int expected = waiting() + static_cast<int>(bytes.size());
  send(bytes);
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (waiting() < expected) {
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("the pty did not pass the bytes on");
    }
    std::this_thread::sleep_for(std::chrono::microseconds(20));
  }
}

void Pty::send(const Bytes& bytes) {
  if (::write(farEnd_.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    throw std::runtime_error("the pty did not take the bytes");
  }
}

int Pty::waiting() const {
  int count = 0;
  checked(ioctl(tty_.get(), FIONREAD, &count), "FIONREAD");
  return count;
}

Bytes Pty::takeWritten(std::size_t count) {
  Bytes bytes(count);
  std::size_t taken = 0;
  while (taken < count) {
    if (!hasInput(farEnd_.get(), kLimit)) {
      throw std::runtime_error("less was written than expected");
    }
    taken += static_cast<std::size_t>(checked(
        static_cast<int>(::read(farEnd_.get(), bytes.data() + taken, count - taken)), "read"));
  }
  return bytes;
}

bool Pty::hasWritten() const { return hasInput(farEnd_.get(), std::chrono::milliseconds(0)); }

}  // namespace orb::test
