#include "faults/frame_faults.h"

#include <algorithm>
#include <cstdint>

namespace orb::sim {
namespace {

constexpr std::size_t kLengthPosition = 2;
constexpr std::size_t kIdPosition = 4;
constexpr std::size_t kTrailerLength = 3;  // checksum and end bytes

struct Id {
  std::uint8_t id;
  std::uint8_t subId;
};

constexpr std::uint8_t kPowerMode = 0xB9;
constexpr std::uint8_t kUpdateRate = 0x86;
constexpr Id kNavigationMode{0x64, 0x8B};
constexpr Id kSecondBand{0x64, 0x9F};

std::size_t payloadEnd(const Bytes& packet) { return packet.size() - kTrailerLength; }

void fitChecksum(Bytes& packet) {
  std::uint8_t sum = 0;
  for (std::size_t i = kIdPosition; i < payloadEnd(packet); ++i) {
    sum = static_cast<std::uint8_t>(sum ^ packet[i]);
  }
  packet[payloadEnd(packet)] = sum;
}

}  // namespace

void giveWrongId(Bytes& packet) {
  constexpr std::size_t kShortest = kIdPosition + 2 + kTrailerLength;
  if (packet.size() < kShortest) {
    return;
  }
  std::uint8_t& id = packet[kIdPosition];
  std::uint8_t& subId = packet[kIdPosition + 1];
  if (hasSubId(id)) {
    const bool same = id == kNavigationMode.id && subId == kNavigationMode.subId;
    const Id other = same ? kSecondBand : kNavigationMode;
    id = other.id;
    subId = other.subId;
  } else {
    id = id == kPowerMode ? kUpdateRate : kPowerMode;
  }
  fitChecksum(packet);
}

void breakChecksum(Bytes& packet) {
  if (packet.size() < kTrailerLength) {
    return;
  }
  std::uint8_t& checksum = packet[payloadEnd(packet)];
  checksum = static_cast<std::uint8_t>(~checksum);
}

void raiseLength(Bytes& packet, std::size_t more) {
  if (packet.size() < kIdPosition) {
    return;
  }
  constexpr std::size_t kMost = 0xFFFF;
  const std::size_t length =
      static_cast<std::size_t>(packet[kLengthPosition]) << 8 | packet[kLengthPosition + 1];
  const std::size_t claimed = length + std::min(more, kMost - length);
  packet[kLengthPosition] = static_cast<std::uint8_t>(claimed >> 8);
  packet[kLengthPosition + 1] = static_cast<std::uint8_t>(claimed & 0xFF);
}

void insertInMiddle(Bytes& packet, const Bytes& bytes) {
  const auto middle = packet.begin() + static_cast<std::ptrdiff_t>(packet.size() / 2);
  packet.insert(middle, bytes.begin(), bytes.end());
}

Bytes noise(std::size_t count, Draw& draw) {
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(draw.next() & 0xFF);
  }
  return bytes;
}

void turnOneBit(Frame& message, Draw& draw) {
  const std::size_t bodyLength = message.body().size();
  if (bodyLength == 0) {
    return;
  }
  const std::size_t begin = message.payload.size() - bodyLength;
  const std::size_t choices = std::max<std::size_t>(bodyLength - 1, 1);
  std::uint8_t& byte = message.payload[begin + draw.below(choices)];
  byte = static_cast<std::uint8_t>(byte ^ 1U << draw.below(8));
}

}  // namespace orb::sim
