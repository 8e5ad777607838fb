#pragma once

#include <vector>

#include "orb-gnss/packet.h"
#include "support/input.h"

namespace orb::fuzz {

/// A message that was found in a buffer.
struct FoundMessage {
  ORBMsgId id;
  Bytes packet;  ///< whole, with the end bytes that it should have
};

/// What is in a buffer, by a reader that goes through it byte by byte and through the catalogue row
/// by row: slow, and short enough to be seen to be right.
struct Scan {
  explicit Scan(const Bytes& buffer);

  unsigned long position = 0;
  unsigned int good = 0;
  unsigned int errored = 0;
  unsigned int unknown = 0;
  std::vector<FoundMessage> messages;  ///< oldest first

  /// How many messages of this type there are.
  unsigned int count(ORBMessageMsgValue type) const;

 private:
  unsigned long scan(const Bytes& buffer);
};

/// The identity as one number.
inline ORBMessageMsgValue typeOf(ORBMsgId id) {
  return static_cast<ORBMessageMsgValue>(id.id * 256 + id.subId);
}

}  // namespace orb::fuzz
