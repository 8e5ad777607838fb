#include "orb-sim/frame.h"

#include <stdexcept>

#include "model/message_ids.h"
#include "model/packet_layout.h"

namespace orb::sim {
namespace {

std::uint8_t highByte(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }
std::uint8_t lowByte(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }

void count(PacketVerdict verdict, FrameReader::Counts& counts) {
  counts.frames += verdict == PacketVerdict::Good ? 1 : 0;
  counts.badLengths += verdict == PacketVerdict::BadLength ? 1 : 0;
  counts.badChecksums += verdict == PacketVerdict::BadChecksum ? 1 : 0;
  counts.badEnds += verdict == PacketVerdict::BadEnd ? 1 : 0;
  counts.skippedBytes += verdict == PacketVerdict::Good ? 0 : 1;
}

}  // namespace

bool hasSubId(std::uint8_t idByte) { return idByte >= 0x62 && idByte <= 0x6F; }

std::uint16_t Frame::id() const {
  const std::uint8_t idByte = payload.at(0);
  const std::uint8_t subId = hasSubId(idByte) && payload.size() > 1 ? payload[1] : std::uint8_t{0};
  return static_cast<std::uint16_t>(idByte << 8 | subId);
}

Bytes Frame::body() const {
  const std::size_t idLength = hasSubId(payload.at(0)) ? 2 : 1;
  if (payload.size() <= idLength) {
    return {};
  }
  return Bytes(payload.begin() + static_cast<std::ptrdiff_t>(idLength), payload.end());
}

Bytes Frame::packet() const {
  if (payload.size() > 0xFFFF) {
    throw std::length_error("a packet carries at most 65535 bytes");
  }
  const auto length = static_cast<std::uint16_t>(payload.size());
  Bytes packet{kStart1, kStart2, highByte(length), lowByte(length)};
  append(packet, payload);
  packet.insert(packet.end(), {checksum(payload.begin(), payload.end()), kEnd1, kEnd2});
  return packet;
}

Bytes frame(std::uint16_t id, const Bytes& body) {
  Frame frame{{highByte(id)}};
  if (hasSubId(highByte(id))) {
    frame.payload.push_back(lowByte(id));
  }
  append(frame.payload, body);
  return frame.packet();
}

Bytes acknowledge(std::uint16_t id) {
  return Frame{{highByte(message::kAcknowledged), highByte(id)}}.packet();
}

Bytes refuse(std::uint16_t id) {
  return Frame{{highByte(message::kRefused), highByte(id)}}.packet();
}

Frame frameOf(const std::uint8_t* packet) {
  const std::uint8_t* const payload = packet + kHeaderLength;
  return {Bytes(payload, payload + payloadLength(packet))};
}

PacketVerdict judgePacket(const std::uint8_t* begin, std::size_t available) {
  if (begin[0] != kStart1 || (available > 1 && begin[1] != kStart2)) {
    return PacketVerdict::NoStart;
  }
  if (available < kHeaderLength) {
    return PacketVerdict::Incomplete;
  }
  const std::size_t length = payloadLength(begin);
  if (length == 0 || length > FrameReader::kLongestPayload) {
    return PacketVerdict::BadLength;
  }
  if (available < packetLength(begin)) {
    return PacketVerdict::Incomplete;
  }
  const std::uint8_t* const trailer = begin + kHeaderLength + length;
  if (checksum(begin + kHeaderLength, trailer) != trailer[0]) {
    return PacketVerdict::BadChecksum;
  }
  const bool isEnded = trailer[1] == kEnd1 && trailer[2] == kEnd2;
  return isEnded ? PacketVerdict::Good : PacketVerdict::BadEnd;
}

std::vector<Frame> FrameReader::push(const Bytes& bytes) {
  append(pending_, bytes);
  return scan(0);
}

std::vector<Frame> FrameReader::abandon() {
  if (!midFrame()) {
    return {};
  }
  ++counts_.skippedBytes;
  return scan(1);
}

std::vector<Frame> FrameReader::scan(std::size_t position) {
  std::vector<Frame> frames;
  while (position < pending_.size()) {
    const std::uint8_t* const begin = pending_.data() + position;
    const PacketVerdict verdict = judgePacket(begin, pending_.size() - position);
    if (verdict == PacketVerdict::Incomplete) {
      break;
    }
    count(verdict, counts_);
    if (verdict == PacketVerdict::Good) {
      frames.push_back(frameOf(begin));
      position += packetLength(begin);
    } else {
      ++position;
    }
  }
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(position));
  return frames;
}

}  // namespace orb::sim
