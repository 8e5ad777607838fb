#pragma once

#include <cstdint>
#include <memory>

#include "orb-sim/device.h"

namespace orb::sim {

/// A serial line with a device at its far end: a TCP port on the loopback interface that carries
/// the line's bytes and nothing else.
///
///     Receiver receiver;
///     TcpLine line(receiver);
///     // clients connect to 127.0.0.1:line.port()
///
/// A thread of the line's own serves the device. One client at a time holds the line; one that
/// connects meanwhile waits for its turn. A client that has closed its connection, or only its
/// sending side, has left. What the device says while there is no client is lost.
///
/// A client that sends and leaves more than 1 MiB unread waits until it reads; one line on standard
/// error says so.
///
/// Where the device drops the line (Device::takeHangUp()), the client's connection is closed after
/// what has been written so far; the next client is let in at once.
class TcpLine {
 public:
  /// Plugs in `device`, which must outlive the line, and listens on 127.0.0.1:`port`; 0 takes any
  /// free port. Throws std::system_error where the port cannot be had.
  explicit TcpLine(Device& device, std::uint16_t port = 0);
  TcpLine(const TcpLine&) = delete;
  TcpLine& operator=(const TcpLine&) = delete;
  ~TcpLine();

  /// Where clients connect.
  std::uint16_t port() const;

 private:
  struct Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace orb::sim
