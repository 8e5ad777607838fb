#pragma once

#include <algorithm>
#include <cstddef>

#include "orb-gnss/message_builder.h"
#include "support/sample_bytes.h"

namespace orb::bench {

/// A builder with its list.
struct Assembler {
  ORBMessageList list{};
  ORBMessageBuilder builder{&list};

  unsigned long update(const unsigned char* bytes, std::size_t length) {
    constexpr unsigned char kReplyId = 0x83;
    return builder.update(kReplyId, bytes, length);
  }

  /// A round of a wait in which what is listed is not what is awaited.
  void updateAndEmpty(const unsigned char* bytes, std::size_t length) {
    update(bytes, length);
    list.Empty();
  }
};

/// Calls `handle` with pieces of the bytes, of `size` bytes each, that start `stride` bytes apart.
template <typename Handle>
void forEachPiece(const Bytes& bytes, std::size_t size, std::size_t stride, Handle handle) {
  for (std::size_t at = 0; at + size <= bytes.size(); at += stride) {
    handle(bytes.data() + at, size);
  }
}

}  // namespace orb::bench
