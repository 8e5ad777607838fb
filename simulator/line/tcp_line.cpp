#include "orb-sim/tcp_line.h"

#include "line/server.h"
#include "line/tcp_port.h"

namespace orb::sim {

struct TcpLine::Implementation {
  Implementation(Device& device, std::uint16_t number) : port(number), server(device, port) {}

  TcpPort port;
  Server server;
};

TcpLine::TcpLine(Device& device, std::uint16_t port)
    : implementation_(std::make_unique<Implementation>(device, port)) {}

TcpLine::~TcpLine() = default;

std::uint16_t TcpLine::port() const { return implementation_->port.port(); }

}  // namespace orb::sim
