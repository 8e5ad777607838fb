#include "line/tcp_port.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>

namespace orb::sim {
namespace {

constexpr int kWaitingClients = 8;

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void check(int result, const std::string& what) {
  if (result != 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

void enable(int socket, int level, int option) {
  const int on = 1;
  ::setsockopt(socket, level, option, &on, sizeof on);
}

OwnedDescriptor listenOn(std::uint16_t port) {
  OwnedDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0),
                           "socket");
  // Otherwise the port stays taken for a minute after a client's last connection.
  enable(listener.get(), SOL_SOCKET, SO_REUSEADDR);
  const sockaddr_in address = loopback(port);
  const std::string name = "127.0.0.1:" + std::to_string(port);
  check(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), name);
  check(::listen(listener.get(), kWaitingClients), name);
  return listener;
}

std::uint16_t portOf(const OwnedDescriptor& listener) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  check(::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length),
        "getsockname");
  return ntohs(address.sin_port);
}

bool wouldBlock() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

TcpPort::TcpPort(std::uint16_t port) : listener_(listenOn(port)), port_(portOf(listener_)) {}

Bytes TcpPort::read() {
  if (isConnected()) {
    return receive();
  }
  accept();
  return {};
}

void TcpPort::accept() {
  const int client = ::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  if (client >= 0) {
    client_ = OwnedDescriptor(client, "accept4");
    // Bytes are paced, or come in pieces, on purpose.
    enable(client, IPPROTO_TCP, TCP_NODELAY);
  } else if (!wouldBlock() && errno != ECONNABORTED) {
    // Without descriptors or memory, the client that waits keeps the listener readable.
    constexpr std::chrono::milliseconds kRetry{50};
    std::this_thread::sleep_for(kRetry);
  }
}

Bytes TcpPort::receive() {
  Bytes bytes(4096);
  const ssize_t count = ::recv(client_.get(), bytes.data(), bytes.size(), 0);
  if (count == 0 || (count < 0 && !wouldBlock())) {
    client_.reset();
  }
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

void TcpPort::write(Bytes& bytes) {
  const ssize_t count =
      isConnected() ? ::send(client_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) : 0;
  if (count > 0) {
    bytes.erase(bytes.begin(), bytes.begin() + count);
  } else if (count < 0 && !wouldBlock()) {
    client_.reset();
  }
  if (!isConnected()) {
    bytes.clear();
  }
}

// A socket that is closed with something unread in it resets the connection, and with it what the
// client has not yet received.
void TcpPort::hangUp() {
  if (!isConnected()) {
    return;
  }
  ::shutdown(client_.get(), SHUT_WR);
  constexpr int kMostReads = 64;
  for (int i = 0; i < kMostReads && isConnected() && !receive().empty(); ++i) {
  }
  client_.reset();
}

}  // namespace orb::sim
