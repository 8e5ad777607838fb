#pragma once

#include "orb-gnss/message.h"
#include "protocol/messages.h"

namespace orb {

/// A message to the receiver, written down the way its table row reads:
///
///     Command(message::kSetSerialPort).u8(port).u8(baudCode).u8(1)
///
/// Each call appends to the body, multi-byte values with their high byte first and floating-point
/// values as their IEEE 754 bits. Bytes that are not given stay 0. A value too wide for its place
/// is cut to its low bytes.
class Command {
 public:
  explicit Command(const Request& request)
      : message_(request.id, request.payloadLength, nullptr), reply_(request.reply) {}

  Command&& u8(unsigned int value) &&;
  Command&& u16(unsigned int value) &&;
  Command&& u32(unsigned int value) &&;
  Command&& f32(float value) &&;
  Command&& f64(double value) &&;
  /// `count` bytes of one value.
  Command&& repeated(unsigned int count, unsigned int value) &&;

  ORBMessage& message() { return message_; }

  /// The message that answers it; 0 where nothing is awaited.
  ORBMessageMsgValue reply() const { return reply_; }

 private:
  ORBMessage message_;
  ORBMessageMsgValue reply_;
  unsigned long next_ = 0;
};

}  // namespace orb
