#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>

#include "orb-sim/frame.h"

namespace orb::sim {

// A packet on the line: two start bytes, the length of the payload, the payload, its checksum, two
// end bytes.
constexpr std::uint8_t kStart1 = 0xA0;
constexpr std::uint8_t kStart2 = 0xA1;
constexpr std::uint8_t kEnd1 = 0x0D;
constexpr std::uint8_t kEnd2 = 0x0A;
constexpr std::size_t kLengthPosition = 2;
constexpr std::size_t kHeaderLength = 4;   // start bytes and length
constexpr std::size_t kTrailerLength = 3;  // checksum and end bytes

/// All bytes from `first` on, each combined with the next by exclusive or.
template <typename Iterator>
std::uint8_t checksum(Iterator first, Iterator last) {
  return std::accumulate(first, last, std::uint8_t{0}, [](std::uint8_t sum, std::uint8_t byte) {
    return static_cast<std::uint8_t>(sum ^ byte);
  });
}

/// The length that a packet's header claims for its payload.
inline std::size_t payloadLength(const std::uint8_t* packet) {
  return static_cast<std::size_t>(packet[kLengthPosition]) << 8 | packet[kLengthPosition + 1];
}

/// The length that it claims for the whole packet.
inline std::size_t packetLength(const std::uint8_t* packet) {
  return kHeaderLength + payloadLength(packet) + kTrailerLength;
}

/// The frame that a whole packet carries.
Frame frameOf(const std::uint8_t* packet);

/// What some bytes begin with.
enum class PacketVerdict { NoStart, Incomplete, BadLength, BadChecksum, BadEnd, Good };

/// Judges `available` bytes, one or more.
PacketVerdict judgePacket(const std::uint8_t* begin, std::size_t available);

}  // namespace orb::sim
