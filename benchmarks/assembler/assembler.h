#pragma once

#include <algorithm>
#include <cstddef>

#include "orb-gnss/message_builder.h"
#include "support/bytes.h"
#include "support/turns.h"
#include "support/work.h"

namespace orb::bench {

/// What a packet is longer than its payload.
constexpr std::size_t kPacketOverhead = 7;

/// A builder with its list.
struct Assembler {
  ORBMessageList list{};
  ORBMessageBuilder builder{&list};

  unsigned long update(const unsigned char* bytes, std::size_t length) {
    constexpr unsigned char kReplyId = 0x83;
    return builder.update(kReplyId, bytes, length);
  }
};

/// Calls `handle` with each piece of the bytes.
template <typename Handle>
void inPieces(const Bytes& bytes, std::size_t size, Handle handle) {
  for (std::size_t at = 0; at < bytes.size(); at += size) {
    handle(bytes.data() + at, std::min(size, bytes.size() - at));
  }
}

/// What it takes to cut `frames` frames out of the bytes, given in one call, and to keep them all,
/// of the assembler and of the limit. Throws where either finds another number of frames.
Turns assembleAllInTurns(const Bytes& bytes, std::size_t frames, int turns);

/// Frames handed over in pieces of 1 KiB, the list emptied behind each.
Row framesInPieces(std::size_t payloadLength);

/// 4 MiB of frames in one call.
Row framesInOneCall(std::size_t payloadLength);

/// How the time of a frame changes with the number of frames in the call, of the assembler and of
/// the limit, for which new memory is as dear.
std::vector<Row> growthByFrames();

/// Bytes in which nothing, or next to nothing, is found.
Row scanOfText();
Row scanOfNoise();

}  // namespace orb::bench
