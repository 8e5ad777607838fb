#pragma once

#include "orb-gnss/message.h"

namespace orb {

/// The payload of a received message. Index 0 is the message id; bytes beyond the payload, which
/// a short reply does not have, read as 0.
class Reply {
 public:
  explicit Reply(const ORBMessage& message) : message_(message) {}

  unsigned char u8(unsigned long index) const {
    return index < message_.getPayloadLength() ? message_.getPayloadData()[index] : 0;
  }

 private:
  const ORBMessage& message_;
};

}  // namespace orb
