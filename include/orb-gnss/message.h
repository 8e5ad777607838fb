#pragma once

#include <memory>
#include <string>

#include "orb-gnss/export.h"
#include "orb-gnss/packet.h"

/// One message, held as a complete packet that is ready to be sent: the checksum is kept valid
/// after every change. One thread at a time uses a message.
class ORB_GNSS_EXPORT ORBMessage {
 public:
  /// A message of identity `type` with `payloadLength` bytes of payload (id, sub-id and body).
  /// With a null `data` the body is all zeros. Otherwise the body is copied from `data`, which
  /// offers `payloadLength` readable bytes (orbPutPayloadIntoPacket says why so many).
  ORBMessage(ORBMessageMsgValue type, unsigned long payloadLength, const unsigned char* data);

  /// A copy has a packet of its own.
  ORBMessage(const ORBMessage& other);
  ORBMessage& operator=(const ORBMessage&) = delete;
  ~ORBMessage();

  /// The message's identity, id × 256 + sub-id.
  unsigned short getMsgSidId() const;
  /// The message id.
  unsigned char getMid() const;
  /// The sub-id; 0 for an id that carries none.
  unsigned char getSid() const;

  /// Number of payload bytes: id, sub-id where there is one, and body.
  unsigned long getPayloadLength() const;
  /// The payload; its first byte is the message id.
  unsigned char* getPayloadData();
  /// The same, of a message that is not changed.
  const unsigned char* getPayloadData() const;

  /// Number of packet bytes: the payload length and 7.
  unsigned long getPacketLength() const;
  /// The packet; its first byte is the first start byte.
  unsigned char* getPacketData();
  /// The same, of a message that is not changed.
  const unsigned char* getPacketData() const;

  /// Sets body byte `index` (0 is the first byte after the id or sub-id), renews the checksum and
  /// returns `value`. An `index` at or beyond the payload length changes nothing and returns the
  /// complement of `value`. The bound counts the id and sub-id too, so the first index after the
  /// body falls on the checksum, which is renewed at once, and for a message with a sub-id the
  /// next one on the first end byte: stay within the body.
  unsigned char setByte(unsigned long index, unsigned char value);

  /// Body byte `index`; 0 for an index at or beyond the payload length. The bound is setByte's.
  unsigned char getByte(unsigned long index) const;

  /// Packet byte `index`, unchecked.
  unsigned char getByteFull(unsigned long index) const;

  /// The last byte but one of the packet, which is the first end byte, 0x0D, and not the checksum.
  /// The checksum itself is getByteFull(getPacketLength() - 3).
  unsigned char getChecksum() const;

  /// "65 01: " and the catalogue's description, for log lines. A payload length outside the
  /// message's limits yields "Unknown message type" after the numbers.
  std::string getMessageDescription() const;

  /// Writes the description and all packet bytes in hexadecimal as one line to std::cout and
  /// flushes it. std::cout is left in decimal with the fill character '0'.
  void showPacket() const;

  /// Used by the constructor: allocatePacketDataBuffer(), then constructPacket().
  void buildMessage(const unsigned char* data, unsigned long payloadLength);
  /// Allocates a packet filled with zeros for `payloadLength` bytes of payload.
  void allocatePacketDataBuffer(unsigned long payloadLength);
  /// Writes the fields and, unless `data` is null, the body.
  void constructPacket(const unsigned char* data, unsigned long payloadLength);

 private:
  friend class ORBMessageBuilder;

  /// A received packet, copied as it stands but for its end bytes, which are not read. The packet
  /// says `id` and `payloadLength` itself, and its checksum is right.
  ORB_GNSS_HIDDEN ORBMessage(ORBMsgId id, const unsigned char* packet,
                             unsigned short payloadLength);

  ORB_GNSS_HIDDEN unsigned long bodyOffset() const;

  ORBMsgId id_;
  unsigned long payloadLength_ = 0;
  unsigned long packetLength_ = 0;
  std::unique_ptr<unsigned char[]> packet_;
};
