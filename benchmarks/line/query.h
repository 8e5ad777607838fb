#pragma once

#include <string>

#include "line/far_end.h"
#include "orb-gnss/serial_channel.h"

namespace orb::bench {

/// The first byte of a packet, by which a far end recognises a query.
constexpr unsigned char kStartByte = 0xA0;

/// The query of the elevation and carrier-to-noise ratio masks, and its answer.
inline const Bytes kMasksQuery{0xA0, 0xA1, 0x00, 0x01, 0x2F, 0x2F, 0x0D, 0x0A};
inline const Bytes kMasksReply{0xA0, 0xA1, 0x00, 0x04, 0xB0, 0x01, 0x05, 0x14, 0xA0, 0x0D, 0x0A};

/// A query by the library. Throws std::runtime_error where it cannot be sent or another answer
/// comes.
class LibraryQuery {
 public:
  /// Opens the device.
  explicit LibraryQuery(const std::string& tty) : channel_(tty) {}

  void send();
  void receive();

 private:
  orbIO channel_;
};

/// A whole exchange: opens, sends, receives, closes.
void queryByLibrary(const std::string& tty);

}  // namespace orb::bench
