#pragma once

#include <memory>

#include "orb-gnss/serial_channel.h"
#include "support/bytes.h"

// What goes over the line and to standard error, written by hand.

namespace orb::test {

inline const Bytes kAck{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x82, 0x0D, 0x0A};
inline const Bytes kOtherAck{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x02, 0x81, 0x0D, 0x0A};
inline const Bytes kBadAck{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x7D, 0x0D, 0x0A};
inline const Bytes kRefusal{0xA0, 0xA1, 0x00, 0x02, 0x84, 0x01, 0x85, 0x0D, 0x0A};
inline const Bytes kUnknown{0xA0, 0xA1, 0x00, 0x02, 0x61, 0x01, 0x60, 0x0D, 0x0A};
inline const Bytes kOutputMode{0xA0, 0xA1, 0x00, 0x03, 0xC3, 0x01, 0x00, 0xC2, 0x0D, 0x0A};
inline const Bytes kPulseWidth{0xA0, 0xA1, 0x00, 0x06, 0x65, 0x80, 0x00,
                               0x98, 0x96, 0x80, 0x6B, 0x0D, 0x0A};

/// Bytes that are part of no packet.
inline Bytes noise(unsigned long length) { return Bytes(length, 0x55); }

/// What `receive` returns for a null message.
inline const Bytes kNothing{};

inline constexpr const char* kCouldNotOpen =
    "Could not open /dev/tty_gps cannot communicate with the orbitek device.\n";
inline constexpr const char* kCouldNotSend =
    "Cannot send message to the orbitek, the device is not open!\n";
inline constexpr const char* kCouldNotReceive =
    " orbIO::ReceiveMessage Could not receive data from the orbitek, device is not open!\n";
inline constexpr const char* kTimedOut =
    " orbIO::ReceiveMessage Timed out waiting for rx from orbitek.\n";

/// The packet of the message that `channel` receives.
inline Bytes receive(orbIO& channel, unsigned short type, int timeout = 2) {
  const std::unique_ptr<ORBMessage> message(channel.ReceiveMessage(type, timeout));
  return message == nullptr ? kNothing : packetOf(*message);
}

}  // namespace orb::test
