#include "orb-sim/tcp_line.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "base/owned_descriptor.h"
#include "line/available_bytes.h"
#include "line/port.h"
#include "line/server.h"

namespace orb::sim {
namespace {

void enable(int socket, int level, int option) {
  const int on = 1;
  ::setsockopt(socket, level, option, &on, sizeof on);
}

OwnedDescriptor listenOn(std::uint16_t port) {
  constexpr int kWaitingClients = 8;
  OwnedDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0),
                           "socket");
  // Otherwise the port stays taken for a minute after a client's last connection.
  enable(listener.get(), SOL_SOCKET, SO_REUSEADDR);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const std::string name = "127.0.0.1:" + std::to_string(port);
  checked(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
          name);
  checked(::listen(listener.get(), kWaitingClients), name);
  return listener;
}

/// A TCP connection on the loopback interface, of one client at a time.
class TcpPort : public Port {
 public:
  explicit TcpPort(std::uint16_t port) : listener_(listenOn(port)) {}

  std::uint16_t number() const;

  /// The client's connection or, while there is none, the socket that a client comes to.
  int descriptor() const override { return client_.isOpen() ? client_.get() : listener_.get(); }

  /// Lets a client in where there is none, and sees one off that has closed its connection.
  Bytes read() override;

  /// Without a client, the bytes are lost.
  void write(Bytes& bytes) override;

  void hangUp() override;

 private:
  void accept();
  Bytes receive();

  OwnedDescriptor listener_;
  OwnedDescriptor client_;
};

std::uint16_t TcpPort::number() const {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  checked(::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &length),
          "getsockname");
  return ntohs(address.sin_port);
}

Bytes TcpPort::read() {
  if (client_.isOpen()) {
    return receive();
  }
  accept();
  return {};
}

void TcpPort::accept() {
  client_ =
      OwnedDescriptor(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (client_.isOpen()) {
    // Bytes are paced, or come in pieces, on purpose.
    enable(client_.get(), IPPROTO_TCP, TCP_NODELAY);
  } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
    // The client that waits keeps the listener readable.
    constexpr std::chrono::milliseconds kRetry{50};
    std::this_thread::sleep_for(kRetry);
  }
}

Bytes TcpPort::receive() {
  std::optional<Bytes> bytes = readAvailable(client_.get());
  if (!bytes) {
    client_.reset();
  }
  return std::move(bytes).value_or(Bytes{});
}

void TcpPort::write(Bytes& bytes) {
  if (!client_.isOpen() || !writeAvailable(client_.get(), bytes)) {
    client_.reset();
    bytes.clear();
  }
}

// A socket that is closed with something unread in it resets the connection, and with it what the
// client has not yet received.
void TcpPort::hangUp() {
  if (!client_.isOpen()) {
    return;
  }
  ::shutdown(client_.get(), SHUT_WR);
  constexpr int kMostReads = 64;
  for (int i = 0; i < kMostReads && client_.isOpen() && !receive().empty(); ++i) {
  }
  client_.reset();
}

}  // namespace

struct TcpLine::Implementation {
  Implementation(Device& device, std::uint16_t number) : port(number), server(device, port) {}

  TcpPort port;
  Server server;
};

TcpLine::TcpLine(Device& device, std::uint16_t port)
    : implementation_(std::make_unique<Implementation>(device, port)) {}

TcpLine::~TcpLine() = default;

std::uint16_t TcpLine::port() const { return implementation_->port.number(); }

}  // namespace orb::sim
