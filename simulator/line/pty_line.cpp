#include "orb-sim/pty_line.h"

#include "line/pty_port.h"
#include "line/received_log.h"
#include "line/server.h"

namespace orb::sim {

using std::chrono::milliseconds;

struct PtyLine::Implementation {
  Implementation(Device& device, const std::filesystem::path& link)
      : port(link), server(device, port, &log) {}

  PtyPort port;
  ReceivedLog log;
  Server server;
};

PtyLine::PtyLine(Device& device, const std::filesystem::path& link)
    : implementation_(std::make_unique<Implementation>(device, link)) {}

PtyLine::~PtyLine() = default;

std::string PtyLine::path() const { return implementation_->port.path(); }

Bytes PtyLine::received() const { return implementation_->log.bytes(); }

void PtyLine::forgetReceived() { implementation_->log.forget(); }

bool PtyLine::waitForBytes(std::size_t count, milliseconds limit) {
  return implementation_->log.waitForBytes(count, limit);
}

bool PtyLine::waitForMessage(std::uint16_t id, std::size_t count, milliseconds limit) {
  return implementation_->log.waitForMessage(id, count, limit);
}

void PtyLine::send(const Bytes& bytes) { implementation_->server.send(bytes); }

}  // namespace orb::sim
