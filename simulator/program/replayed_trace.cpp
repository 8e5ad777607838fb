#include "program/replayed_trace.h"

#include <iostream>

#include "program/failure.h"
#include "trace/description.h"

namespace orb::sim {

std::unique_ptr<Device> ReplayedTrace::receiver(std::function<void()> end) {
  return std::make_unique<ReplayDevice>(
      trace_, pace_,
      [this, end = std::move(end)](const Frame& packet) { return answerUnknown(packet, end); });
}

Bytes ReplayedTrace::answerUnknown(const Frame& packet, const std::function<void()>& end) {
  if (unknownPackets_++ == 0) {
    const Bytes bytes = packet.packet();
    const std::string text = describe({StreamItem::Kind::Packet, 0, bytes, bytes.size()});
    std::cerr << "orb-sim: the trace does not have: " + text + '\n';
    if (unknown_ == Unknown::Exit) {
      end();
    }
  }
  return unknown_ == Unknown::Refuse ? refuse(packet.id()) : Bytes();
}

int ReplayedTrace::conclude(int status) const {
  if (unknownPackets_ == 0) {
    return status;
  }
  std::cerr << "orb-sim: packets that the trace does not have: " << unknownPackets_ << ", "
            << (unknown_ == Unknown::Refuse ? "refused" : "not answered") << '\n';
  return unknown_ == Unknown::Exit ? kExitOwnFailure : status;
}

}  // namespace orb::sim
