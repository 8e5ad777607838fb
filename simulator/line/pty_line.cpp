#include "orb-sim/pty_line.h"

#include "line/pty_port.h"
#include "line/server.h"

namespace orb::sim {

using std::chrono::milliseconds;

struct PtyLine::Implementation {
  Implementation(Device& device, const std::filesystem::path& link)
      : port(link), server(device, port) {}

  PtyPort port;
  Server server;
};

PtyLine::PtyLine(Device& device, const std::filesystem::path& link)
    : implementation_(std::make_unique<Implementation>(device, link)) {}

PtyLine::~PtyLine() = default;

std::string PtyLine::path() const { return implementation_->port.path(); }

Bytes PtyLine::received() const { return implementation_->server.log().bytes(); }

std::vector<PtyLine::Received> PtyLine::receivedPackets() const {
  return implementation_->server.log().packets();
}

void PtyLine::forgetReceived() { implementation_->server.log().forget(); }

bool PtyLine::waitForBytes(std::size_t count, milliseconds limit) {
  return implementation_->server.log().waitForBytes(count, limit);
}

bool PtyLine::waitForPacket(const Bytes& packet, std::size_t count, milliseconds limit) {
  const auto wanted = [&](const Received& received) { return received.frame.packet() == packet; };
  return implementation_->server.log().waitForPackets(wanted, count, limit);
}

bool PtyLine::waitForMessage(std::uint16_t id, std::size_t count, milliseconds limit) {
  const auto wanted = [&](const Received& received) { return received.frame.id() == id; };
  return implementation_->server.log().waitForPackets(wanted, count, limit);
}

void PtyLine::send(const Bytes& bytes) { implementation_->server.send(bytes); }

void PtyLine::startChatter(milliseconds interval) {
  implementation_->server.startChatter(interval);
}

void PtyLine::stopChatter() { implementation_->server.stopChatter(); }

const Bytes& PtyLine::chatter() {
  static const Bytes kText{'c', 'h', 'a', 't', 't', 'e', 'r', '\r', '\n'};
  return kText;
}

}  // namespace orb::sim
