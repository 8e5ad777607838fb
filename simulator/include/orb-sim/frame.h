#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// One message as it stands between the length field and the checksum of its packet.
///
/// Messages are named by 16 bits: the id byte, then the sub-id byte, which is 0 for ids outside
/// 0x62..0x6F. 0x0200 is id 0x02; 0x6501 is id 0x65 with sub-id 0x01.
struct Frame {
  Bytes payload;  ///< Id byte, sub-id byte where there is one, body; never empty.

  std::uint16_t id() const;  ///< id byte and sub-id byte as one number
  Bytes body() const;        ///< what follows them

  /// The whole packet as it stands on the line.
  Bytes packet() const;
};

/// True for the id bytes that a sub-id byte follows.
bool hasSubId(std::uint8_t idByte);

/// Builds the packet of message `id`: A0 A1, length, id, sub-id, body, checksum, 0D 0A.
Bytes frame(std::uint16_t id, const Bytes& body = {});

/// The answer to a message that the receiver has taken: 83 and the id byte. The sub-id is not said.
Bytes acknowledge(std::uint16_t id);

/// The answer to a message that the receiver does not take: 84 and the id byte.
Bytes refuse(std::uint16_t id);

/// Cuts a byte stream into frames. Any stream will do: noise is skipped, a frame may arrive in any
/// number of pieces, and a damaged frame costs its first byte only, so that a good frame inside
/// the length that it claims is found. One thread at a time uses a reader.
class FrameReader {
 public:
  /// The longest payload of any message; a longer length field is taken for noise.
  static constexpr std::size_t kLongestPayload = 261;

  /// What became of the bytes so far.
  struct Counts {
    std::size_t frames = 0;        ///< good frames
    std::size_t badLengths = 0;    ///< start bytes with a length of 0 or above kLongestPayload
    std::size_t badChecksums = 0;  ///< whole frames whose checksum is wrong
    std::size_t badEnds = 0;       ///< whole frames that do not end in 0D 0A
    std::size_t skippedBytes = 0;  ///< bytes that belong to no good frame
  };

  /// Adds bytes to the stream; returns the frames that they complete, in order.
  std::vector<Frame> push(const Bytes& bytes);

  /// True while a frame has begun and is not complete.
  bool midFrame() const { return !pending_.empty(); }

  /// Gives up the incomplete frame; returns the good frames that follow its start.
  std::vector<Frame> abandon();

  /// Counted since construction.
  const Counts& counts() const { return counts_; }

 private:
  std::vector<Frame> scan(std::size_t position);

  Bytes pending_;  ///< Empty, or begins with the start of an incomplete frame.
  Counts counts_;
};

}  // namespace orb::sim
