#pragma once

#include "orb-gnss/message.h"

namespace orb {

/// The payload of a received message. Index 0 is the message id. Multi-byte fields have their high
/// byte first; floating-point fields are IEEE 754 bits. Bytes beyond the payload, which a short
/// reply does not have, read as 0.
class Reply {
 public:
  explicit Reply(const ORBMessage& message) : message_(message) {}

  unsigned char u8(unsigned long index) const;
  unsigned short u16(unsigned long index) const;
  unsigned int u32(unsigned long index) const;
  float f32(unsigned long index) const;
  double f64(unsigned long index) const;

 private:
  const ORBMessage& message_;
};

}  // namespace orb
