#pragma once

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <system_error>

#include "orb-sim/bytes.h"

namespace orb::sim::test {

/// A program at the near end of a line that is a TCP port.
class TcpClient {
 public:
  explicit TcpClient(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::system_error(errno, std::generic_category(), "connect");
    }
  }
  TcpClient(const TcpClient&) = delete;
  TcpClient& operator=(const TcpClient&) = delete;
  ~TcpClient() { ::close(socket_); }

  void write(const Bytes& bytes) {
    if (::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("cannot write to the socket");
    }
  }

  /// `count` bytes, or fewer when the line is closed or falls silent for too long.
  Bytes read(std::size_t count, std::chrono::milliseconds limit = kLimit) {
    Bytes all;
    while (all.size() < count && isReadable(limit)) {
      Bytes bytes(count - all.size());
      const ssize_t some = ::recv(socket_, bytes.data(), bytes.size(), 0);
      if (some <= 0) {
        break;
      }
      all.insert(all.end(), bytes.begin(), bytes.begin() + some);
    }
    return all;
  }

  /// Whether the line ends, with nothing more to read and without an error.
  bool isAtEnd() {
    std::uint8_t byte = 0;
    return isReadable(kLimit) && ::recv(socket_, &byte, 1, 0) == 0;
  }

  /// Lets the socket go in such a way that the other end sees an error.
  void resetWhenClosed() {
    const linger now{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  }

 private:
  static constexpr std::chrono::milliseconds kLimit{10000};

  bool isReadable(std::chrono::milliseconds limit) const {
    pollfd polled{socket_, POLLIN, 0};
    return ::poll(&polled, 1, static_cast<int>(limit.count())) == 1;
  }

  int socket_;
};

}  // namespace orb::sim::test
