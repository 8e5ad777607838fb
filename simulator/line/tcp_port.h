#pragma once

#include <cstdint>

#include "line/owned_descriptor.h"
#include "line/port.h"

namespace orb::sim {

/// A line that is a TCP connection on the loopback interface, of one client at a time.
class TcpPort : public Port {
 public:
  /// Listens on 127.0.0.1; 0 takes any free port. Throws std::system_error.
  explicit TcpPort(std::uint16_t port);

  std::uint16_t port() const { return port_; }

  /// The client's connection or, while there is none, the socket that a client comes to.
  int descriptor() const override { return isConnected() ? client_.get() : listener_.get(); }

  /// Lets a client in where there is none, and sees one off that has closed its connection.
  Bytes read() override;

  /// Without a client, the bytes are lost.
  void write(Bytes& bytes) override;

  void hangUp() override;

 private:
  bool isConnected() const { return client_.get() >= 0; }
  void accept();
  Bytes receive();

  OwnedDescriptor listener_;
  std::uint16_t port_;
  OwnedDescriptor client_;
};

}  // namespace orb::sim
