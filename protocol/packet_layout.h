#pragma once

#include "protocol/sub_id.h"

namespace orb {

constexpr unsigned char kStartByte1 = 0xA0;
constexpr unsigned char kStartByte2 = 0xA1;
constexpr unsigned char kEndByte1 = 0x0D;
constexpr unsigned char kEndByte2 = 0x0A;

constexpr unsigned long kLengthOffset = 2;
constexpr unsigned long kPayloadOffset = 4;

/// Bytes after the checksum.
constexpr unsigned long kEndLength = 2;

/// Bytes of a packet that are not payload: start bytes, length, checksum and end bytes.
constexpr unsigned long kPacketOverhead = 7;

/// The largest payload length in the catalogue.
constexpr unsigned long kLongestPayload = 261;

/// Where the body of a packet with this message id starts.
constexpr unsigned long bodyOffset(unsigned char id) { return kPayloadOffset + idLength(id); }

}  // namespace orb
