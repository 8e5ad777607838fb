#pragma once

#include <string>

#include "line/far_end.h"
#include "orb-gnss/serial_channel.h"

namespace orb::bench {

/// The first byte of a packet, by which a far end knows a query.
constexpr unsigned char kStartByte = 0xA0;

/// The query of the elevation and carrier-to-noise ratio masks, and its answer.
extern const Bytes kMasksQuery;
extern const Bytes kMasksReply;

/// A query by way of the library. Throws std::runtime_error where it is not sent or the answer is
/// another.
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
