#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference/text.h"

namespace orb::reference {

/// One line of block_digests.tsv: FNV-1a hashes over the buffers and over the result lines of a
/// block, and the number of messages in it.
struct BlockDigest {
  std::uint64_t buffers;
  std::uint64_t results;
  unsigned long messages;

  bool operator==(const BlockDigest&) const = default;
};

/// The checked-in digests, indexed by block.
std::vector<BlockDigest> checkedInDigests();

/// What a buffer of a block is and what the library made of it.
struct PlayedBuffer {
  Bytes buffer;
  std::vector<std::string> lines;
};

/// Hands the thousand buffers of a block to the library, in the same way as transcript.py does to
/// the model.
std::vector<PlayedBuffer> playBlock(unsigned block);

BlockDigest digestOf(const std::vector<PlayedBuffer>& played);

/// Has the model play the block and shows both sides of the first buffer on which they differ.
std::string firstDifference(unsigned block, const std::vector<PlayedBuffer>& played);

}  // namespace orb::reference
