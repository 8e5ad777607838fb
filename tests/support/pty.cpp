#include "support/pty.h"

#include <poll.h>
#include <sys/ioctl.h>
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
  if (::write(pty_.master.get(), bytes.data(), bytes.size()) !=
      static_cast<ssize_t>(bytes.size())) {
    throw std::runtime_error("the pty did not take the bytes");
  }
}

int Pty::waiting() const {
  int count = 0;
  checked(ioctl(pty_.tty.get(), FIONREAD, &count), "FIONREAD");
  return count;
}

Bytes Pty::takeWritten(std::size_t count) {
  Bytes bytes(count);
  std::size_t taken = 0;
  while (taken < count) {
    if (!hasInput(pty_.master.get(), kLimit)) {
      throw std::runtime_error("less was written than expected");
    }
    taken += static_cast<std::size_t>(checked(
        static_cast<int>(::read(pty_.master.get(), bytes.data() + taken, count - taken)), "read"));
  }
  return bytes;
}

bool Pty::hasWritten() const { return hasInput(pty_.master.get(), std::chrono::milliseconds(0)); }

}  // namespace orb::test
