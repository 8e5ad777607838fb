#include "faults/frame_faults.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "model/message_ids.h"
#include "model/nmea_format.h"

namespace orb::sim {
namespace {

constexpr std::size_t kLengthPosition = 2;
constexpr std::size_t kIdPosition = 4;
constexpr std::size_t kTrailerLength = 3;  // checksum and end bytes

constexpr std::array<const char*, 4> kSentences{
    "GPGGA,120000.000,4822.2740,N,01134.0734,E,1,09,0.9,475.9,M,44.2,M,,0000",
    "GPRMC,120000.000,A,4822.2740,N,01134.0734,E,000.0,000.0,010324,,,A",
    "GPGSA,A,3,02,05,07,09,13,15,20,28,30,,,,1.6,0.9,1.3",
    "GPZDA,120000.000,01,03,2024,00,00",
};

std::size_t payloadEnd(const Bytes& packet) { return packet.size() - kTrailerLength; }

message::Id otherThan(int id, message::Id usual, message::Id inItsPlace) {
  return id == usual ? inItsPlace : usual;
}

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
  std::uint8_t& idByte = packet[kIdPosition];
  std::uint8_t& subId = packet[kIdPosition + 1];
  if (hasSubId(idByte)) {
    const message::Id wrong =
        otherThan(idByte << 8 | subId, message::kNavigationMode, message::kSecondBand);
    idByte = static_cast<std::uint8_t>(wrong >> 8);
    subId = static_cast<std::uint8_t>(wrong & 0xFF);
  } else {
    const message::Id wrong = otherThan(idByte << 8, message::kPowerMode, message::kUpdateRate);
    idByte = static_cast<std::uint8_t>(wrong >> 8);
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

Bytes nmeaBurst(std::size_t sentences) {
  Bytes burst;
  for (std::size_t i = 0; i < sentences; ++i) {
    const std::string sentence = nmeaSentence(kSentences[i % kSentences.size()]);
    burst.insert(burst.end(), sentence.begin(), sentence.end());
  }
  return burst;
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
