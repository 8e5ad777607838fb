#include "orb-sim/pty_line.h"

#include "line/server.h"

namespace orb::sim {

using std::chrono::milliseconds;

PtyLine::PtyLine(Device& device, const std::filesystem::path& link)
    : server_(std::make_unique<Server>(device, link)) {}

PtyLine::~PtyLine() = default;

const std::string& PtyLine::path() const { return server_->path(); }

Bytes PtyLine::received() const { return server_->log().bytes(); }

std::vector<PtyLine::Received> PtyLine::receivedPackets() const { return server_->log().packets(); }

void PtyLine::forgetReceived() { server_->log().forget(); }

bool PtyLine::waitForBytes(std::size_t count, milliseconds limit) {
  return server_->log().waitForBytes(count, limit);
}

bool PtyLine::waitForPacket(const Bytes& packet, std::size_t count, milliseconds limit) {
  const auto wanted = [&](const Received& received) { return received.frame.packet() == packet; };
  return server_->log().waitForPackets(wanted, count, limit);
}

bool PtyLine::waitForMessage(std::uint16_t id, std::size_t count, milliseconds limit) {
  const auto wanted = [&](const Received& received) { return received.frame.id() == id; };
  return server_->log().waitForPackets(wanted, count, limit);
}

void PtyLine::send(const Bytes& bytes) { server_->send(bytes); }

void PtyLine::startChatter(milliseconds interval) { server_->startChatter(interval); }

void PtyLine::stopChatter() { server_->stopChatter(); }

const Bytes& PtyLine::chatter() {
  static const Bytes kText{'c', 'h', 'a', 't', 't', 'e', 'r', '\r', '\n'};
  return kText;
}

}  // namespace orb::sim
