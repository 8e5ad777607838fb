#include "line/pty.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>

#include <array>
#include <cstddef>
#include <thread>

namespace orb::sim {
namespace {

void check(int result, const char* call) {
  if (result != 0) {
    throw std::system_error(errno, std::generic_category(), call);
  }
}

std::string ttyOf(const OwnedDescriptor& master) {
  check(::grantpt(master.get()), "grantpt");
  check(::unlockpt(master.get()), "unlockpt");
  std::array<char, 64> path{};
  check(::ptsname_r(master.get(), path.data(), path.size()), "ptsname_r");
  return path.data();
}

void makeRaw(const OwnedDescriptor& tty) {
  termios settings{};
  check(::tcgetattr(tty.get(), &settings), "tcgetattr");
  ::cfmakeraw(&settings);
  check(::tcsetattr(tty.get(), TCSANOW, &settings), "tcsetattr");
}

}  // namespace

Pty::Pty()
    : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), "posix_openpt"),
      path_(ttyOf(master_)),
      tty_(::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), path_) {
  makeRaw(tty_);
}

Bytes Pty::read() {
  Bytes bytes(4096);
  const ssize_t count = ::read(master_.get(), bytes.data(), bytes.size());
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

void Pty::write(Bytes& bytes) {
  const ssize_t count = ::write(master_.get(), bytes.data(), bytes.size());
  if (count > 0) {
    bytes.erase(bytes.begin(), bytes.begin() + count);
  }
}

// The tty is readable here exactly while clients have something left to read.
void Pty::waitUntilRead(std::chrono::milliseconds limit) const {
  const auto end = std::chrono::steady_clock::now() + limit;
  pollfd polled{tty_.get(), POLLIN, 0};
  while (::poll(&polled, 1, 0) == 1 && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds{1});
  }
}

}  // namespace orb::sim
