#pragma once

#include <memory>
#include <string>

#include "orb-gnss/serial_channel.h"
#include "support/bytes.h"
#include "support/packets.h"

// What channels say on standard error, written by hand.

namespace orb::test {

/// Bytes that are part of no packet.
inline Bytes noise(unsigned long length) { return Bytes(length, 0x55); }

/// What `receive` returns for a null message.
inline const Bytes kNothing{};

inline constexpr const char* kCouldNotOpen =
    "Could not open /dev/tty_gps cannot communicate with the orbitek device.\n";
inline constexpr const char* kCouldNotSend =
    "Cannot send message to the orbitek, the device is not open!\n";
/// When its device is missing, and then cannot send.
inline const std::string kNoDevice = std::string(kCouldNotOpen) + kCouldNotSend;
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
