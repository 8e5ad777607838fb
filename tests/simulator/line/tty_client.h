#pragma once

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "orb-sim/bytes.h"

namespace orb::sim::test {

/// A program at the near end of the line. It takes the tty as it finds it.
class TtyClient {
 public:
  explicit TtyClient(const std::string& path) : tty_(::open(path.c_str(), O_RDWR | O_NOCTTY)) {
    if (tty_ < 0) {
      throw std::runtime_error("cannot open " + path);
    }
  }
  TtyClient(const TtyClient&) = delete;
  TtyClient& operator=(const TtyClient&) = delete;
  ~TtyClient() { ::close(tty_); }

  int descriptor() const { return tty_; }

  void write(const Bytes& bytes) {
    if (::write(tty_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("cannot write to the tty");
    }
  }

  /// What one read returns; empty when nothing comes within the limit.
  Bytes readSome(std::chrono::milliseconds limit = kLimit) {
    pollfd polled{tty_, POLLIN, 0};
    if (::poll(&polled, 1, static_cast<int>(limit.count())) != 1) {
      return {};
    }
    Bytes bytes(4096);
    const ssize_t count = ::read(tty_, bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

  /// At least `count` bytes, or fewer when the line falls silent for too long.
  Bytes read(std::size_t count) {
    Bytes all;
    while (all.size() < count) {
      const Bytes some = readSome();
      if (some.empty()) {
        break;
      }
      all.insert(all.end(), some.begin(), some.end());
    }
    return all;
  }

  /// Whether the line hangs up within the limit.
  bool waitForHangUp() {
    pollfd polled{tty_, 0, 0};
    return ::poll(&polled, 1, static_cast<int>(kLimit.count())) == 1 &&
           (polled.revents & POLLHUP) != 0;
  }

 private:
  static constexpr std::chrono::milliseconds kLimit{10000};

  int tty_;
};

}  // namespace orb::sim::test
