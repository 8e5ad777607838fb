#pragma once

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>

#include "base/owned_descriptor.h"
#include "orb-sim/bytes.h"

namespace orb::test {

inline bool holds(const sim::Bytes& all, const sim::Bytes& part) {
  return std::search(all.begin(), all.end(), part.begin(), part.end()) != all.end();
}

/// A program at the near end of a line.
class LineClient {
 public:
  int descriptor() const { return line_.get(); }

  void write(const sim::Bytes& bytes) {
    if (::write(descriptor(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("cannot write to the line");
    }
  }

  /// What one read returns, at most `most` bytes; empty when nothing comes within the limit.
  sim::Bytes readSome(std::chrono::milliseconds limit = kLimit, std::size_t most = 4096) {
    if (eventsWithin(limit, POLLIN) == 0) {
      return {};
    }
    sim::Bytes bytes(most);
    const ssize_t count = ::read(descriptor(), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

  /// `count` bytes, or fewer when the line is closed or silent for too long.
  sim::Bytes read(std::size_t count, std::chrono::milliseconds limit = kLimit) {
    sim::Bytes all;
    sim::Bytes some;
    do {
      some = readSome(limit, count - all.size());
      sim::append(all, some);
    } while (!some.empty() && all.size() < count);
    return all;
  }

  /// What comes until these bytes have come, or until the line is closed or silent for too long.
  sim::Bytes readUntil(const sim::Bytes& last) {
    sim::Bytes all;
    sim::Bytes some;
    do {
      some = readSome();
      sim::append(all, some);
    } while (!some.empty() && !holds(all, last));
    return all;
  }

  /// Writes without reading until the line takes nothing for half a second, or 64 MiB. Returns how
  /// many bytes it took.
  std::size_t flood() {
    constexpr std::size_t kMost = std::size_t{64} << 20;
    const sim::Bytes block(4096, 0x5A);
    ::fcntl(descriptor(), F_SETFL, ::fcntl(descriptor(), F_GETFL) | O_NONBLOCK);
    std::size_t taken = 0;
    while (taken < kMost && eventsWithin(std::chrono::milliseconds(500), POLLOUT) == POLLOUT) {
      const ssize_t count = ::write(descriptor(), block.data(), block.size());
      taken += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return taken;
  }

  /// What an echoing device makes of these bytes.
  sim::Bytes echoOf(const sim::Bytes& bytes) {
    write(bytes);
    return read(bytes.size());
  }

 protected:
  static constexpr std::chrono::milliseconds kLimit{10000};

  explicit LineClient(OwnedDescriptor line) : line_(std::move(line)) {}

  /// The events that poll() reports; 0 when there is none within the limit.
  short eventsWithin(std::chrono::milliseconds limit, short awaited) const {
    pollfd polled{descriptor(), awaited, 0};
    return ::poll(&polled, 1, static_cast<int>(limit.count())) == 1 ? polled.revents : short{0};
  }

 private:
  OwnedDescriptor line_;
};

/// One on a tty, which it takes as it finds it.
class TtyClient : public LineClient {
 public:
  explicit TtyClient(const std::string& path)
      : LineClient(OwnedDescriptor(::open(path.c_str(), O_RDWR | O_NOCTTY), path)) {}

  /// Whether the line hangs up within the limit.
  bool waitForHangUp() const { return (eventsWithin(kLimit, 0) & POLLHUP) != 0; }
};

/// One on a TCP port.
class TcpClient : public LineClient {
 public:
  explicit TcpClient(std::uint16_t port)
      : LineClient(OwnedDescriptor(::socket(AF_INET, SOCK_STREAM, 0), "socket")) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(descriptor(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::system_error(errno, std::generic_category(), "connect");
    }
  }

  /// Whether the line ends, with nothing more to read and without an error.
  bool isAtEnd() {
    std::uint8_t byte = 0;
    return eventsWithin(kLimit, POLLIN) != 0 && ::recv(descriptor(), &byte, 1, 0) == 0;
  }

  /// Lets the socket go in such a way that the other end sees an error.
  void resetWhenClosed() {
    const linger now{1, 0};
    ::setsockopt(descriptor(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
  }
};

}  // namespace orb::test
