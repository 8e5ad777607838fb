#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "orb-gnss/serial_channel.h"
#include "support/sample_bytes.h"

namespace orb::bench {

/// The first byte of a packet, by which a far end recognises a query.
constexpr unsigned char kStartByte = 0xA0;

/// The query of the elevation and carrier-to-noise ratio masks, and its answer.
inline const Bytes kMasksQuery{0xA0, 0xA1, 0x00, 0x01, 0x2F, 0x2F, 0x0D, 0x0A};
inline const Bytes kMasksReply{0xA0, 0xA1, 0x00, 0x04, 0xB0, 0x01, 0x05, 0x14, 0xA0, 0x0D, 0x0A};
constexpr ORBMessageMsgValue kQueryMasks = 0x2F00;
constexpr ORBMessageMsgValue kMasks = 0xB000;

/// A query by the library, on a channel that stays open.
class LibraryQuery {
 public:
  explicit LibraryQuery(const std::string& tty) : channel_(tty) {}

  /// Throws std::runtime_error where the query cannot be sent.
  void send() {
    ORBMessage query(kQueryMasks, 1, nullptr);
    expect(channel_.SendMessage(&query) == 0);
  }

  /// Throws std::runtime_error where another answer comes, or none.
  void receive() {
    constexpr int kTimeoutSeconds = 5;
    const std::unique_ptr<ORBMessage> reply(channel_.ReceiveMessage(kMasks, kTimeoutSeconds));
    expect(reply != nullptr && reply->getPayloadData()[3] == kMasksReply[7]);
  }

 private:
  static void expect(bool isRight) {
    if (!isRight) {
      throw std::runtime_error("a query was not answered as it should be");
    }
  }

  orbIO channel_;
};

/// A whole exchange: opens, sends, receives, closes.
inline void queryByLibrary(const std::string& tty) {
  LibraryQuery query(tty);
  query.send();
  query.receive();
}

}  // namespace orb::bench
