#pragma once

#include "orb-gnss/message.h"

namespace orb {

/// A message to the receiver, written down the way its table row reads:
///
///     Command(message_id::kSetUpSerialPort, 4).u8(port).u8(baudCode).u8(1)
///
/// Each call appends to the body, multi-byte values with their high byte first and floating-point
/// values as their IEEE 754 bits. Bytes that are not given stay 0. A value too wide for its place
/// is cut to its low bytes.
class Command {
 public:
  /// `payloadLength` counts the id, the sub-id where there is one, and the body.
  Command(ORBMessageMsgValue message, unsigned long payloadLength)
      : message_(message, payloadLength, nullptr) {}

  Command&& u8(unsigned int value) &&;
  Command&& u16(unsigned int value) &&;
  Command&& u32(unsigned int value) &&;
  Command&& f32(float value) &&;
  Command&& f64(double value) &&;
  /// `count` bytes of one value.
  Command&& repeated(unsigned int count, unsigned int value) &&;

  ORBMessage& message() { return message_; }

 private:
  ORBMessage message_;
  unsigned long next_ = 0;
};

}  // namespace orb
