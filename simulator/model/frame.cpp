#include "orb-sim/frame.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "model/message_ids.h"

namespace orb::sim {
namespace {

constexpr std::uint8_t kStart1 = 0xA0;
constexpr std::uint8_t kStart2 = 0xA1;
constexpr std::uint8_t kEnd1 = 0x0D;
constexpr std::uint8_t kEnd2 = 0x0A;
constexpr std::size_t kHeaderLength = 4;   // start bytes and length field
constexpr std::size_t kTrailerLength = 3;  // checksum and end bytes

template <typename Iterator>
std::uint8_t checksum(Iterator first, Iterator last) {
  return std::accumulate(first, last, std::uint8_t{0}, [](std::uint8_t sum, std::uint8_t byte) {
    return static_cast<std::uint8_t>(sum ^ byte);
  });
}

std::size_t lengthField(const std::uint8_t* packet) {
  return static_cast<std::size_t>(packet[2]) << 8 | packet[3];
}

std::uint8_t highByte(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }
std::uint8_t lowByte(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }

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

FrameReader::Verdict FrameReader::judge(std::size_t position) const {
  const std::uint8_t* begin = pending_.data() + position;
  const std::size_t available = pending_.size() - position;
  if (begin[0] != kStart1 || (available > 1 && begin[1] != kStart2)) {
    return Verdict::NoStart;
  }
  if (available < kHeaderLength) {
    return Verdict::Incomplete;
  }
  const std::size_t length = lengthField(begin);
  if (length == 0 || length > kLongestPayload) {
    return Verdict::BadLength;
  }
  if (available < kHeaderLength + length + kTrailerLength) {
    return Verdict::Incomplete;
  }
  const std::uint8_t* trailer = begin + kHeaderLength + length;
  if (checksum(begin + kHeaderLength, trailer) != trailer[0]) {
    return Verdict::BadChecksum;
  }
  return trailer[1] == kEnd1 && trailer[2] == kEnd2 ? Verdict::Good : Verdict::BadEnd;
}

void FrameReader::count(Verdict verdict) {
  counts_.frames += verdict == Verdict::Good ? 1 : 0;
  counts_.badLengths += verdict == Verdict::BadLength ? 1 : 0;
  counts_.badChecksums += verdict == Verdict::BadChecksum ? 1 : 0;
  counts_.badEnds += verdict == Verdict::BadEnd ? 1 : 0;
  counts_.skippedBytes += verdict == Verdict::Good ? 0 : 1;
}

std::vector<Frame> FrameReader::scan(std::size_t position) {
  std::vector<Frame> frames;
  while (position < pending_.size()) {
    const Verdict verdict = judge(position);
    if (verdict == Verdict::Incomplete) {
      break;
    }
    count(verdict);
    if (verdict != Verdict::Good) {
      ++position;
      continue;
    }
    const std::size_t length = lengthField(pending_.data() + position);
    const auto payload = pending_.begin() + static_cast<std::ptrdiff_t>(position + kHeaderLength);
    frames.push_back({Bytes(payload, payload + static_cast<std::ptrdiff_t>(length))});
    position += kHeaderLength + length + kTrailerLength;
  }
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(position));
  return frames;
}

}  // namespace orb::sim
